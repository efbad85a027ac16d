#pragma once

#include <QString>

/// Has an exception that nobody catches remembered in the settings ("quillonlib_exception_info", the newest
/// ten), told to the user in the problem-report alert, and end the process with status 1.
void installExceptionHandler();

/// What the handler does: `name` is the exception's type, `information` what is known of it. Never returns.
[[noreturn]] void exceptionHandler(const QString& name, const QString& reason);
