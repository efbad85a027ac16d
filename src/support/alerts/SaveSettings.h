#pragma once

/// Saves the settings now. A failure is shown in an alert, once per run. Main thread only.
void saveSettings();

/// Shows the problem with the settings file, if there is one, in an alert; once per run. Main thread only.
void reportSettingsProblemOnce();
