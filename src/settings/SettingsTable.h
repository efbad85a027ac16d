#pragma once

#include "settings/Setting.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <span>

/// The settings as a table, for code that lists them or looks up a key given by the user. Any thread, except
/// for registerDefaults().
namespace settings {

/// All settings: first those with a default, in the order of registration, then the others.
std::span<const Row* const> all();

/// Null for an unknown key.
const Row* find(const QString& key);

/// Registers the defaults with the standard store and makes it report changes. Call it once on the main
/// thread, before any setting is read.
void registerDefaults();

/// Parses a value given by the user for a setting of this type: a whole number for an integer, a JSON array
/// of strings for a list (bytes are the UTF-8 of the strings). Empty if the text does not fit the type.
std::optional<QVariant> valueFromText(Type type, const QString& text);
/// The inverse, for display. An invalid variant gives an empty text.
QString textFromValue(const QVariant& value);

/// The known keys that are most similar to `key`, the best one first; at most three.
QStringList nearestKeys(const QString& key);

}  // namespace settings
