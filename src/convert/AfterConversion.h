#pragma once

class MKVFileInfo;

/// What follows the end of a run, beside the job's own state.
namespace afterconversion {

/// Tells the user in the notification area that the movie is converted, with a button that shows it, or that
/// it failed.
void notifyUser(const MKVFileInfo& info, bool hasFailed);

/// Counts the run, failed or not, in the settings.
void countRun();

/// Moves the source to the trash or deletes it, as the setting says. What cannot be moved stays, with a line
/// in the log.
void disposeOfSource(const MKVFileInfo& info);

}  // namespace afterconversion
