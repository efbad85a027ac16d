#pragma once

#include <QString>

/// Keeps the last messages in the settings, so that they travel with a problem report.
namespace logrings {

/// From now on each message of the log goes to its level's ring of ten slots. The settings reach the disk
/// soon after a message of level 3 and below, so that it survives a crash. Once, early in the launch.
void install();

}  // namespace logrings

/// Keeps `message` in the settings' trace ring of 43 slots. Not guarded against concurrent callers.
void log_to_prefs(const QString& message);

/// Prints `message` to standard output, saves the settings and ends the process with status 1.
[[noreturn]] void fatal(const QString& message);
