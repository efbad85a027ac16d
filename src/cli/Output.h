#pragma once

#include <QJsonObject>
#include <QString>

/// The program's standard output and standard error, as UTF-8; each line is written in one call. If the
/// reader of a pipe has closed it, the text is dropped and the program continues its conversions. Control
/// characters other than line breaks, which names of files may contain, are written escaped. Main thread
/// only.
namespace output {

/// A name as it is written for people: its control characters, line breaks too, escaped as in C.
QString shown(const QString& name);

/// A message with the names of the file that it is about, and of its output, as shown() gives them.
QString about(const QString& path, QString message);

void line(const QString& text);
/// Without a line break and unescaped, for lines that are redrawn in place.
void raw(const QString& text);
/// Writes one object in one line.
void json(const QJsonObject& object);
/// Writes a line to standard error.
void error(const QString& text);

bool isTerminal();
/// Columns of the terminal; 80 if unknown.
int columns();

}  // namespace output
