#pragma once

/// Has a crash of the program (an access to memory that is not there, an abort, a division by zero and the
/// like) leave a report in crashlogs::ownFolder(): what happened, where, in which version, the log's last
/// ten lines and the back-trace. Then the crash takes its course: the process ends by its signal, with a core
/// dump where those are wanted.
///
/// Of the program's own functions the back-trace has the addresses within the program file,
/// "ravelin(+0x1234)". `addr2line -Cfe ravelin 0x1234` tells their names and lines, with the file that
/// crashed or an unstripped one of the same build: a table of their names would make the programs a third
/// larger.
namespace crashreport {

/// To be called early in main(), once; needs no QCoreApplication. Makes no file and no folder. A stack that
/// is full is reported of the thread that called this; on another one there is no room left for a report.
void install();

}  // namespace crashreport
