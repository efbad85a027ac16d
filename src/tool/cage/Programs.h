#pragma once

#include <QString>
#include <QStringList>

/// What the kernel executes and reads to start a program.
namespace programs {

/// The program itself and its interpreters: the dynamic loader and, for a script, the program of its first
/// line. Full paths; empty if the kernel cannot start the file. Any thread.
QStringList executed(const QString& program);

/// Where the dynamic loader finds libraries: the system's folders, and what LD_PRELOAD and LD_LIBRARY_PATH
/// name. Files and folders.
QStringList libraries(const QString& program);

}  // namespace programs
