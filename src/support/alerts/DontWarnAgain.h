#pragma once

#include "support/alerts/AlertPresenter.h"

/// Alerts that the user may silence. What was silenced is an integer in the settings: 1, the box was ticked.

/// Shown until the user ticks the box, and again after the application's version changed. From any thread; a
/// caller on another than the main thread does not wait.
void alert_dontwarnagain_version(const QString& identifier, const QString& title, const QString& message,
                                 const QString& button, const QString& suppressionTitle);

/// The same, silenced for good.
void alert_dontwarnagain_ever(const QString& identifier, const QString& title, const QString& message,
                              const QString& button, const QString& suppressionTitle);

/// Silenced for good under `key`. Main thread only. Returns the response, or -1 when it was not shown.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
long _alert_dontwarnagain_prefs(const QString& key, const QString& title, const QString& message,
                                const AlertButton& defaultButton, const AlertButton& alternate,
                                const QString& suppressionTitle);
