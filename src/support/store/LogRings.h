#pragma once

#include <QString>

/// Keeps the last messages in the settings, so that they travel with a problem report.
namespace logrings {

/// From now on each message of the log goes to its level's ring of ten slots. Once, early in the launch.
void install();

}  // namespace logrings

/// Keeps `message` in the settings' trace ring of 43 slots. Not guarded against concurrent callers.
void log_to_prefs(const QString& message);
