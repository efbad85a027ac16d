#pragma once

/// Writes a report to crashlogs::ownFolder() when the program crashes (segmentation fault, abort, division by
/// zero and others): signal, address, version, the last ten log lines and the backtrace. Then the process
/// ends by its signal, with a core dump if those are enabled.
///
/// The backtrace has addresses within the program file for its own functions, "ravelin(+0x1234)". `addr2line
/// -Cfe ravelin 0x1234` prints their names and lines, given the file that crashed or an unstripped one of the
/// same build: a symbol table would make the programs a third larger.
namespace crashreport {

/// Call once, early in main(); needs no QCoreApplication and creates no file or folder. Crashes of all
/// threads are reported, a stack overflow only on the thread that called this: others have no alternate
/// signal stack.
void install();

}  // namespace crashreport
