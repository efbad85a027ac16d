#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QUrl>

#include <optional>

/// Text operations with the exact semantics that the report parsers need: which characters end a line,
/// whether a split keeps empty pieces, how a number is read. All searches are case-sensitive. Callable from
/// any thread.
namespace text {

/// U+000A to U+000D, U+0085, U+2028 and U+2029.
bool isNewline(QChar c);
/// Tab and all Unicode space separators.
bool isWhitespace(QChar c);

/// The pieces between newline characters, each of which ends a line on its own; keeps empty pieces. The views
/// point into `text`.
QList<QStringView> lines(QStringView text);

/// The pieces between occurrences of `separator`; keeps empty pieces. A text without separator is one piece.
QList<QStringView> split(QStringView text, QStringView separator);
/// Piece number `index` of split(); null if there are fewer.
std::optional<QStringView> piece(QStringView text, QStringView separator, qsizetype index);

bool containsAny(QStringView text, const QStringList& candidates);
QString replaced(QString text, const QString& before, const QString& after);
QStringView trimmedOfWhitespace(QStringView text);
QStringView trimmedOfWhitespaceAndNewlines(QStringView text);
/// Removes the characters in `characters` at both ends.
QStringView trimmedOf(QStringView text, QStringView characters);
/// Removes the characters that are not in `characters` at both ends.
QStringView trimmedTo(QStringView text, QStringView characters);
QString strippedOfNewlines(const QString& text);
QString clamp(const QString& text, qsizetype length);
/// Percent-encodes (as UTF-8) every character that may not stand in a URL query.
QString escaped(const QString& text);

/// The integer at the beginning of the text, after white space: an optional sign and digits; 0 if there is
/// none. Values out of range are clamped.
qint32 integerValue(QStringView text);
qint64 integerValue64(QStringView text);
/// The floating-point number at the beginning of the text; 0 if there is none.
double doubleValue(QStringView text);

/// Decodes bytes by their byte-order mark, else as UTF-8, else as ISO Latin 1, in which every byte is valid.
QString fromData(const QByteArray& data);
/// Decodes UTF-8; null if the bytes are not valid.
std::optional<QString> fromUtf8(const QByteArray& data);

/// "3m 20s", or "20s" below a minute; truncates fractions.
QString formattedTimeFromTimeInterval(double seconds);

/// The translation of the text, or the text itself if there is none.
QString localized(const char* text);

}  // namespace text
