#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QUrl>

#include <optional>

/// Operations on text with exactly the semantics that the report parsers rely on: which characters end a
/// line, whether empty pieces survive a split, how a number is read. All searches are case-sensitive.
namespace text {

/// U+000A to U+000D, U+0085, U+2028 and U+2029.
bool isNewline(QChar c);
/// Tab and every blank of Unicode.
bool isWhitespace(QChar c);

/// The pieces between newline characters, each of which ends a line on its own; empty pieces stay. The views
/// point into `text`.
QList<QStringView> lines(QStringView text);

/// The pieces between occurrences of `separator`; empty pieces stay, a text without it is one piece.
QList<QStringView> split(QStringView text, QStringView separator);
/// Piece number `index` of split(); nothing when there are fewer.
std::optional<QStringView> piece(QStringView text, QStringView separator, qsizetype index);

bool containsAny(QStringView text, const QStringList& candidates);
QString replaced(QString text, const QString& before, const QString& after);
QStringView trimmedOfWhitespace(QStringView text);
QStringView trimmedOfWhitespaceAndNewlines(QStringView text);
/// Without every character of `characters` at both ends.
QStringView trimmedOf(QStringView text, QStringView characters);
/// Without every character at both ends that is not one of `characters`.
QStringView trimmedTo(QStringView text, QStringView characters);
QString strippedOfNewlines(const QString& text);
QString clamp(const QString& text, qsizetype length);
/// Percent-encodes (as UTF-8) every character that may not stand in a URL query.
QString escaped(const QString& text);

/// The integer with which the text begins, after white space: an optional sign and digits; 0 if there is
/// none. Values out of range become the nearest limit.
qint32 integerValue(QStringView text);
qint64 integerValue64(QStringView text);
/// The floating-point number with which the text begins; 0 if there is none.
double doubleValue(QStringView text);

/// The bytes as text: by their byte-order mark, else UTF-8, else ISO Latin 1, to which any byte is a
/// character.
QString fromData(const QByteArray& data);
/// The bytes as UTF-8; nothing when they are not valid.
std::optional<QString> fromUtf8(const QByteArray& data);

/// "3m 20s", or "20s" below a minute; fractions are cut off.
QString formattedTimeFromTimeInterval(double seconds);

/// The text in the user's language; itself where there is no translation.
QString localized(const char* text);

}  // namespace text
