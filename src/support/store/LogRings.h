#pragma once

#include <QString>

/// Keeps the last log messages in the settings, which problem reports include. Callable from any thread.
namespace logrings {

/// Stores each further log message in its level's ring of ten slots. The settings are saved soon after a
/// message of level 3 or below, so that it survives a crash. Call once, early in the launch.
void install();

}  // namespace logrings

/// Stores `message` in the settings' trace ring of 43 slots. One thread at a time.
void log_to_prefs(const QString& message);

/// Prints `message` to standard output, saves the settings and ends the process with status 1. Callable from
/// any thread.
[[noreturn]] void fatal(const QString& message);
