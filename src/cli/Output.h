#pragma once

#include <QJsonObject>
#include <QString>

/// The program's standard output and standard error, as UTF-8; each line is flushed. If the reader of a pipe
/// has closed it, the text is dropped and the program continues its conversions. Main thread only.
namespace output {

void line(const QString& text);
/// Without a line break, for lines that are redrawn in place.
void raw(const QString& text);
/// Writes one object in one line.
void json(const QJsonObject& object);
/// Writes a line to standard error.
void error(const QString& text);

bool isTerminal();
/// Columns of the terminal; 80 if unknown.
int columns();

}  // namespace output
