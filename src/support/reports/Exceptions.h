#pragma once

#include <QString>

/// Installs the handler of uncaught exceptions of all threads: it stores them in the settings
/// ("quillonlib_exception_info", the newest ten), shows the problem-report alert, and ends the process with
/// status 1.
void installExceptionHandler();

/// The handler itself: `name` is the exception's type, `reason` its message. Callable from any thread; never
/// returns.
[[noreturn]] void exceptionHandler(const QString& name, const QString& reason);
