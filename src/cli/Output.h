#pragma once

#include <QJsonObject>
#include <QString>

/// The program's standard output and standard error, as UTF-8, each line flushed. A reader that went away
/// does not end the program: the conversions go on.
namespace output {

void line(const QString& text);
/// Without a line break; for what is redrawn in place.
void raw(const QString& text);
/// One object in one line.
void json(const QJsonObject& object);
/// A line on standard error.
void error(const QString& text);

bool isTerminal();
/// Columns of the terminal; 80 where they are not known.
int columns();

}  // namespace output
