#pragma once

class MKVFileInfo;

/// Actions after the end of a run that do not change the job's state. Main thread only.
namespace afterconversion {

/// Counts the run in the settings, also a failed one.
void countRun();

/// Moves the source to the trash or deletes it, depending on the setting. If that fails, the source stays and
/// the error is logged.
void disposeOfSource(const MKVFileInfo& info);

}  // namespace afterconversion
