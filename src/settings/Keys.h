#pragma once

#include <QLatin1StringView>

/// The names of the settings: a k...Key for each row of Settings.def. New code reads a setting by its row,
/// see Settings.h. Constants; any thread.

#define SETTING(key, type, standard, meaning) inline constexpr QLatin1StringView k##key##Key(#key);
#define UNLISTED(key, type, standard, meaning) inline constexpr QLatin1StringView k##key##Key(#key);
#define UNREGISTERED(key, type, meaning) inline constexpr QLatin1StringView k##key##Key(#key);
#include "settings/Settings.def"

inline constexpr QLatin1StringView kConvertedFileCountKey = kconvertedFileCountKey;
