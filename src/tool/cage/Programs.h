#pragma once

#include <QString>
#include <QStringList>

/// What the kernel executes and reads to start a program. What was found in a program's file is kept until
/// the file changes.
namespace programs {

/// The program itself and its interpreters: the dynamic loader and, for a script, the program of its first
/// line. Full paths; empty if the kernel cannot start the file. Any thread.
QStringList executed(const QString& program);

/// Why the kernel cannot run a file, as far as the file itself shows.
enum class Flaw {
    None,            ///< Also of a file that cannot be read.
    NoProgram,       ///< Neither a program nor a script.
    OtherProcessor,  ///< For another kind of processor than this program.
    CutOff,          ///< It ends before what has to be loaded of it.
};
/// Any thread.
Flaw flaw(const QString& program);

/// Where the dynamic loader finds libraries besides the system's folders: its lists, and what LD_PRELOAD and
/// LD_LIBRARY_PATH name. Files and folders. Any thread.
QStringList libraries(const QString& program);
/// The system's folders of libraries; not all of them exist.
QStringList systemLibraries();

}  // namespace programs
