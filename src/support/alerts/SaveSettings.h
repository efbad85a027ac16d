#pragma once

/// Writes the settings now. Why they cannot be saved is shown once a run. Main thread only.
void saveSettings();

/// What is wrong with the settings file, if anything, in an alert; once a run. Main thread only.
void reportSettingsProblemOnce();
