#pragma once

#include "support/store/SettingsStore.h"

#include <QString>
#include <QUrl>
#include <QVariant>

#include <optional>

/// Typed access to the settings by key, with the store's coercion: text that begins with a number reads as
/// that number, a number reads as its text, anything else of the wrong type as null or 0. Integers and floats
/// do not distinguish a missing value from 0. Callable from any thread. Writes reach the disk a few seconds
/// later, or with the store's synchronise().

qint64 defaultInt(const QString& key);
float defaultFloat(const QString& key);
std::optional<QString> defaultString(const QString& key);
/// Text reads as the path of a file, with "~" for the home folder.
std::optional<QUrl> defaultURL(const QString& key);
std::optional<QVariantList> defaultArray(const QString& key);
std::optional<QVariantMap> defaultDict(const QString& key);
/// An invalid variant if there is no value.
QVariant defaultObject(const QString& key);

void setDefaultInt(const QString& key, qint64 value);
void setDefaultFloat(const QString& key, float value);
void setDefaultString(const QString& key, const std::optional<QString>& value);
void setDefaultURL(const QString& key, const std::optional<QUrl>& value);
void setDefaultArray(const QString& key, const std::optional<QVariantList>& value);
void setDefaultDict(const QString& key, const std::optional<QVariantMap>& value);
void setDefaultObject(const QString& key, const QVariant& value);

/// Appends `object` to the array under `key` and drops the oldest entries beyond `maximumEntries`. A value
/// that is not an array is replaced.
void qn_defaults_addtoarray(const QString& key, const QVariant& object, int maximumEntries);

/// The coercion of a value of any type to an integer, a floating-point number and a text.
qint64 integerFromVariant(const QVariant& value);
float floatFromVariant(const QVariant& value);
std::optional<QString> stringFromVariant(const QVariant& value);

/// The store behind these functions: `$XDG_CONFIG_HOME/<bundle identifier>/settings.json`, opened at the
/// first use. It lives until the process ends.
SettingsStore& standardUserDefaults();
/// Replaces it by a store on `filePath`; for tests, before any other thread uses it.
void useSettingsFile(const QString& filePath);
