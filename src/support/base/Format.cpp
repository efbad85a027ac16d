#include "support/base/Format.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonValue>

QString describe(const QString& text) {
    return text;
}

QString describe(const QUrl& url) {
    return url.toString();
}

namespace {

/// A text inside a list: plain words are unchanged, all others are put in quotation marks.
QString listElement(const QString& text) {
    const bool plain = !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'_' || c == u'.' || c == u'/');
    });
    if (plain) return text;
    QString escaped = text;
    escaped.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
    return u'"' + escaped + u'"';
}

template <typename List, typename Element>
QString listText(const List& list, Element element) {
    QString text = QStringLiteral("(\n");
    for (qsizetype i = 0; i < list.size(); ++i) {
        text += QStringLiteral("    ") + element(list[i]);
        text += i + 1 < list.size() ? QStringLiteral(",\n") : QStringLiteral("\n");
    }
    return text + u')';
}

}  // namespace

QString describe(const QStringList& list) {
    return listText(list, listElement);
}

QString describe(const QList<int>& list) {
    return listText(list, [](int number) { return QString::number(number); });
}

QString describe(const QByteArray& bytes) {
    return u'<' + QString::fromLatin1(bytes.toHex()) + u'>';
}

QString describe(const QDateTime& date) {
    return date.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QStringLiteral(" +0000");
}

QString describe(const QVariant& value) {
    if (!value.isValid()) return QStringLiteral("(null)");
    switch (value.typeId()) {
        case QMetaType::QByteArray:
            return describe(value.toByteArray());
        case QMetaType::QDateTime:
            return describe(value.toDateTime());
        case QMetaType::QUrl:
            return describe(value.toUrl());
        case QMetaType::QStringList:
            return describe(value.toStringList());
        case QMetaType::QVariantList:
            return listText(value.toList(), [](const QVariant& v) { return listElement(describe(v)); });
        case QMetaType::QVariantMap:
            return QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact));
        default:
            return value.toString();
    }
}

namespace format_detail {

namespace {

QString text(const Value& value, const Placeholder& placeholder) {
    if (const auto* object = std::get_if<QString>(&value)) return *object;
    if (const auto* number = std::get_if<qint64>(&value)) return QString::number(*number);
    if (const auto* number = std::get_if<quint64>(&value)) return QString::number(*number);
    if (const auto* number = std::get_if<double>(&value))
        return QString::number(*number, 'f', placeholder.precision);
    return QStringLiteral("0x") +
           QString::number(reinterpret_cast<quintptr>(std::get<const void*>(value)), 16);
}

}  // namespace

QString fill(const char* format, std::span<const Value> values) {
    QString result;
    const char* plain = format;
    size_t used = 0;
    const auto flush = [&](const char* end) { result += QString::fromUtf8(plain, end - plain); };
    for (const char* at = format; *at; ++at) {
        if (*at != '%') continue;
        flush(at);
        if (at[1] == '%') {
            result += u'%';
            ++at;
        } else {
            const Placeholder placeholder = readPlaceholder(at);
            result += text(values[used++], placeholder);
            at += placeholder.length - 1;
        }
        plain = at + 1;
    }
    return result + QString::fromUtf8(plain);
}

}  // namespace format_detail
