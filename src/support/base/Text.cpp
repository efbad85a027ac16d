#include "support/base/Text.h"

#include "support/base/Format.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringConverter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace text {

bool isNewline(QChar c) {
    const char16_t u = c.unicode();
    return (u >= 0x000A && u <= 0x000D) || u == 0x0085 || u == 0x2028 || u == 0x2029;
}

bool isWhitespace(QChar c) {
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

QList<QStringView> lines(QStringView text) {
    QList<QStringView> result;
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (!isNewline(text[at])) continue;
        result.append(text.sliced(begin, at - begin));
        begin = at + 1;
    }
    result.append(text.sliced(begin));
    return result;
}

QList<QStringView> split(QStringView text, QStringView separator) {
    return text.split(separator);
}

std::optional<QStringView> piece(QStringView text, QStringView separator, qsizetype index) {
    qsizetype begin = 0;
    for (;;) {
        const qsizetype end = text.indexOf(separator, begin);
        if (index == 0) return end < 0 ? text.sliced(begin) : text.sliced(begin, end - begin);
        if (end < 0) return std::nullopt;
        begin = end + separator.size();
        --index;
    }
}

bool containsAny(QStringView text, const QStringList& candidates) {
    return std::any_of(candidates.cbegin(), candidates.cend(),
                       [&](const QString& c) { return text.contains(c); });
}

QString replaced(QString text, const QString& before, const QString& after) {
    return text.replace(before, after);
}

namespace {

template <typename Predicate>
QStringView trimmedWhile(QStringView text, Predicate goes) {
    while (!text.isEmpty() && goes(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && goes(text.back()))
        text.chop(1);
    return text;
}

}  // namespace

QStringView trimmedOfWhitespace(QStringView text) {
    return trimmedWhile(text, isWhitespace);
}

QStringView trimmedOfWhitespaceAndNewlines(QStringView text) {
    return trimmedWhile(text, [](QChar c) { return isWhitespace(c) || isNewline(c); });
}

QStringView trimmedOf(QStringView text, QStringView characters) {
    return trimmedWhile(text, [&](QChar c) { return characters.contains(c); });
}

QStringView trimmedTo(QStringView text, QStringView characters) {
    return trimmedWhile(text, [&](QChar c) { return !characters.contains(c); });
}

QString strippedOfNewlines(const QString& text) {
    QString result = text;
    result.removeIf(isNewline);
    return result;
}

QString clamp(const QString& text, qsizetype length) {
    return text.left(length);
}

QString escaped(const QString& text) {
    // RFC 3986 allows in a query: unreserved characters, sub-delimiters and ":@/?".
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "!$&'()*+,;=:@/?"));
}

namespace {

/// The sign and the digits at the beginning of `text`, saturated at the limits of 64 bits.
qint64 leadingInteger(QStringView text) {
    qsizetype at = 0;
    while (at < text.size() && (isWhitespace(text[at]) || isNewline(text[at])))
        ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == u'-' || text[at] == u'+')) negative = text[at++] == u'-';
    constexpr qint64 kMaximum = std::numeric_limits<qint64>::max();
    qint64 value = 0;
    for (; at < text.size() && text[at] >= u'0' && text[at] <= u'9'; ++at) {
        const int digit = text[at].unicode() - u'0';
        if (value > (kMaximum - digit) / 10) return negative ? std::numeric_limits<qint64>::min() : kMaximum;
        value = value * 10 + digit;
    }
    return negative ? -value : value;
}

}  // namespace

qint64 integerValue64(QStringView text) {
    return leadingInteger(text);
}

qint32 integerValue(QStringView text) {
    using Limits = std::numeric_limits<qint32>;
    return static_cast<qint32>(std::clamp<qint64>(leadingInteger(text), Limits::min(), Limits::max()));
}

double doubleValue(QStringView text) {
    static const QRegularExpression number(
        QStringLiteral("^\\s*([+-]?(?:\\d+\\.?\\d*|\\.\\d+)(?:[eE][+-]?\\d+)?)"));
    const auto match = number.match(text.toString());
    return match.hasMatch() ? match.captured(1).toDouble() : 0.0;
}

namespace {

/// The size of a code unit in bytes.
qsizetype unitOf(QStringConverter::Encoding encoding) {
    switch (encoding) {
        case QStringConverter::Utf16:
        case QStringConverter::Utf16LE:
        case QStringConverter::Utf16BE:
            return 2;
        case QStringConverter::Utf32:
        case QStringConverter::Utf32LE:
        case QStringConverter::Utf32BE:
            return 4;
        default:
            return 1;
    }
}

std::optional<QString> decoded(const QByteArray& data, QStringConverter::Encoding encoding) {
    if (data.size() % unitOf(encoding) != 0) return std::nullopt;  // The decoder accepts half a unit.
    QStringDecoder decoder(encoding, QStringDecoder::Flag::Stateless);
    QString result = decoder(data);
    if (decoder.hasError()) return std::nullopt;
    return result;
}

}  // namespace

std::optional<QString> fromUtf8(const QByteArray& data) {
    return decoded(data, QStringConverter::Utf8);
}

QString fromData(const QByteArray& data) {
    if (const auto marked = QStringConverter::encodingForData(data)) {
        if (auto result = decoded(data, *marked)) return *result;
    }
    if (auto result = fromUtf8(data)) return *result;
    return QString::fromLatin1(data);
}

QString formattedTimeFromTimeInterval(double seconds) {
    const auto whole = static_cast<qint64>(std::trunc(seconds));
    const qint64 minutes = whole / 60;
    if (minutes != 0) return makeString("%lim %lis", minutes, whole % 60);
    return makeString("%lis", whole);
}

QString localized(const char* text) {
    return QCoreApplication::translate("Ravelin", text);
}

}  // namespace text
