#pragma once

#include "settings/SettingsTable.h"

#include <QJsonValue>
#include <QString>

/// What the command line and the manual page say about a setting. Any thread.
namespace settingdescription {

/// "integer", "boolean" (0 or 1), "text" or "texts".
QString typeWord(settings::Type type);

/// The type with its allowed values: "one of 0 = compatible, 1 = fast, 2 = custom". In English.
QString allowedText(const settings::Row& setting);

/// Null: every value of the type is allowed; else an array of {"value", "word"}.
QJsonValue allowedValues(const settings::Row& setting);

/// What an unset setting reads as: its registered default, else 0 or nothing.
QVariant unsetValue(const settings::Row& setting);

}  // namespace settingdescription
