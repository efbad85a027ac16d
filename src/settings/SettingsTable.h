#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <span>

/// The one table of settings: key, type, registered default and meaning.
namespace settings {

enum class Type {
    Integer,
    Boolean,     ///< An integer that is used as 0 or not 0.
    Data,        ///< Bytes.
    DataArray,   ///< A list of bytes.
    StringArray  ///< A list of texts.
};

struct Setting {
    const char* key;
    Type type;
    bool registered;     ///< Whether a default is registered. Without one an unset integer reads as 0.
    int integerDefault;  ///< The default of an integer; lists are empty by default.
    const char* meaning;

    QVariant defaultValue() const;
};

/// Every setting: first the registered ones, in the order of registration, then those without a default.
std::span<const Setting> all();

/// Nothing for an unknown key.
const Setting* find(const QString& key);

/// Registers the defaults with the standard store. Once, before anything reads a setting.
void registerDefaults();

/// The value that a person's text means for a setting of this type: a whole number for an integer, a JSON
/// array of texts for a list (bytes are the texts' UTF-8). Nothing when it is not of the type.
std::optional<QVariant> valueFromText(Type type, const QString& text);
/// The other way round, for showing. An invalid variant is the empty text.
QString textFromValue(const QVariant& value);

/// The registered default of an integer setting, for a stored value that no list position fits.
int registeredInt(const QString& key);

/// The known keys that `key` was most likely meant to be, nearest first; at the most three.
QStringList nearestKeys(const QString& key);

}  // namespace settings
