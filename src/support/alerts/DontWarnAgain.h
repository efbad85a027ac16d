#pragma once

#include "support/alerts/AlertPresenter.h"

/// Alerts that the user may suppress. The settings store 1 for an alert whose box was ticked.

/// Shown until the user ticks the box, and again after the application's version changed. Callable from any
/// thread; blocks until answered on the main thread only.
void alert_dontwarnagain_version(const QString& identifier, const QString& title, const QString& message,
                                 const QString& button, const QString& suppressionTitle);

/// Several of these in one alert with the list `text`; its box suppresses all of them. Without identifiers it
/// has no box. Main thread only; blocks until answered.
void alert_dontwarnagain_list(const QStringList& identifiers, const QString& title, const QString& message,
                              const QString& text, const QString& button, const QString& suppressionTitle);

/// Whether the user has suppressed this alert for this version; false for an empty identifier.
bool isWarningSuppressed(const QString& identifier);

/// The same as alert_dontwarnagain_version(), but suppressed permanently.
void alert_dontwarnagain_ever(const QString& identifier, const QString& title, const QString& message,
                              const QString& button, const QString& suppressionTitle);

/// Suppressed permanently under `key`. Main thread only. Returns the response, or -1 if the alert was not
/// shown.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
long _alert_dontwarnagain_prefs(const QString& key, const QString& title, const QString& message,
                                const AlertButton& defaultButton, const AlertButton& alternate,
                                const QString& suppressionTitle);
