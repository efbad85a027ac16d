#include "richtext/Links.h"

#include <QStringList>
#include <QUrl>

#include <algorithm>

namespace richtext {

namespace {

constexpr qsizetype kLongest = 2048;  // The usual limit of browsers.

/// The first argument, with or without quotation marks; skips switches before it (\h).
QStringView argumentOf(QStringView rest) {
    for (;;) {
        rest = rest.trimmed();
        const bool isQuoted = rest.startsWith(u'"');
        if (isQuoted) rest = rest.sliced(1);
        const auto end =
            std::ranges::find_if(rest, [=](QChar c) { return isQuoted ? c == u'"' : c.isSpace(); });
        const QStringView argument = rest.first(end - rest.begin());
        if (isQuoted || !argument.startsWith(u'\\')) return argument;
        // A link to a place within the document is not supported.
        if (argument == u"\\l") return {};
        rest = rest.sliced(argument.size());
    }
}

bool isAllowed(const QUrl& url) {
    static const QStringList schemes{"http", "https", "mailto", "file"};
    if (!url.isValid() || url.isEmpty()) return false;
    return url.scheme().isEmpty() ? url.authority().isEmpty() : schemes.contains(url.scheme());
}

}  // namespace

QString linkOfInstruction(const QString& instruction) {
    constexpr QStringView kHyperlink = u"HYPERLINK";
    const QStringView trimmed = QStringView(instruction).trimmed();
    if (!trimmed.startsWith(kHyperlink, Qt::CaseInsensitive)) return {};
    const QStringView address = argumentOf(trimmed.sliced(kHyperlink.size())).trimmed();
    const auto isControl = [](QChar c) { return c.category() == QChar::Other_Control; };
    if (address.size() > kLongest || std::ranges::any_of(address, isControl)) return {};
    const QUrl url(address.toString());
    return isAllowed(url) ? QString::fromLatin1(url.toEncoded()) : QString();
}

}  // namespace richtext
