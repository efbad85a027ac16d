#pragma once

#include "settings/Values.h"
#include "support/store/Defaults.h"

#include <QByteArrayList>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <type_traits>

class QObject;

namespace settings {

enum class Type {
    Integer,
    Boolean,     ///< An integer that is used as 0 or not 0.
    Data,        ///< Bytes.
    DataArray,   ///< A list of bytes.
    StringArray  ///< A list of texts.
};

/// Whether a default is registered. Without one, an unset integer reads as 0.
enum class Registration { Listed, Unlisted, None };

/// The description of a setting, independent of its type. One for each key, for the life of the process.
struct Row {
    QLatin1StringView key;
    Type type;
    Choices choices;  ///< The allowed values. Other values can be stored, too, and have a meaning.
    Registration registration;
    qint64 integerDefault;  ///< The default of an integer; lists are empty by default.
    const char* meaning;

    constexpr bool isRegistered() const { return registration != Registration::None; }
    QVariant defaultValue() const;

    /// The allowed number that `number` stands for.
    constexpr qint64 fitting(qint64 number) const {
        if (choices.isEmpty() || choices.contains(number)) return number;
        return choices.otherwise.value_or(integerDefault);
    }

    /// Calls `action` in the thread of `context`, while that lives, after each change of the stored value;
    /// synchronously if it was written in this thread. An override of this run still has priority, so read
    /// the value again with value().
    void onChange(QObject* context, const std::function<void()>& action) const;
};

template <class Value>
constexpr Type typeOf() {
    // An enum of two values, the second of which stands for every number but 0, is a boolean with names.
    if (std::is_same_v<Value, bool> || (kChoices<Value>.list.size() == 2 && kChoices<Value>.otherwise == 1))
        return Type::Boolean;
    if (std::is_same_v<Value, QByteArray>) return Type::Data;
    if (std::is_same_v<Value, QByteArrayList>) return Type::DataArray;
    if (std::is_same_v<Value, QStringList>) return Type::StringArray;
    return Type::Integer;
}

/// A setting with the type of its value, see Settings.h. Reads and writes access the standard store directly;
/// any thread.
template <class Value>
struct Setting : Row {
    static constexpr bool isNumber = std::is_integral_v<Value> || std::is_enum_v<Value>;

    consteval Setting(const char* itsKey, Registration itsRegistration, qint64 standard,
                      const char* itsMeaning)
        : Row{QLatin1StringView(itsKey), typeOf<Value>(), kChoices<Value>,
              itsRegistration,           standard,        itsMeaning} {}

    /// The override of this run, else the stored value, else the registered default. A number that is not
    /// allowed is converted to an allowed one.
    Value value() const { return from(defaultObject(key)); }

    /// The value if it is an allowed one, else empty.
    std::optional<Value> chosen() const requires std::is_enum_v<Value> {
        const qint64 number = defaultInt(key);
        return choices.contains(number) ? std::optional(static_cast<Value>(number)) : std::nullopt;
    }

    QLatin1StringView word() const requires std::is_enum_v<Value> { return wordOf(value()); }

    void setValue(Value value) const requires isNumber { setDefaultInt(key, static_cast<qint64>(value)); }

    // Pure.

    /// Converts a stored value.
    Value from(const QVariant& stored) const;
    QLatin1StringView wordOf(Value value) const requires std::is_enum_v<Value> {
        const Choice* choice = choices.find(static_cast<qint64>(value));
        return choice ? choice->word : QLatin1StringView();
    }
};

template <class Value>
Value Setting<Value>::from(const QVariant& stored) const {
    if constexpr (std::is_same_v<Value, bool>) {
        return integerFromVariant(stored) != 0;
    } else if constexpr (std::is_same_v<Value, float>) {
        return floatFromVariant(stored);
    } else if constexpr (isNumber) {
        return static_cast<Value>(fitting(integerFromVariant(stored)));
    } else if constexpr (std::is_same_v<Value, QByteArray>) {
        return stored.toByteArray();
    } else {
        Value list;
        const QVariantList elements = stored.toList();
        for (const QVariant& element : elements)
            list.append(element.value<typename Value::value_type>());
        return list;
    }
}

}  // namespace settings
