#pragma once

#include "settings/Setting.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <span>

/// The settings as a table, for those who go through them or have a key from a person.
namespace settings {

/// Every setting: first the registered ones, in the order of registration, then those without a default.
std::span<const Row* const> all();

/// Null for an unknown key.
const Row* find(const QString& key);

/// Registers the defaults with the standard store and has it report changes. Once, before anything reads a
/// setting.
void registerDefaults();

/// The value that a person's text means for a setting of this type: a whole number for an integer, a JSON
/// array of texts for a list (bytes are the texts' UTF-8). Nothing when it is not of the type.
std::optional<QVariant> valueFromText(Type type, const QString& text);
/// The other way round, for showing. An invalid variant is the empty text.
QString textFromValue(const QVariant& value);

/// The known keys that `key` was most likely meant to be, nearest first; at the most three.
QStringList nearestKeys(const QString& key);

}  // namespace settings
