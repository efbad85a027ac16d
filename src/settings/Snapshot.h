#pragma once

#include "settings/Settings.h"

#include <QVariantMap>

namespace settings {

/// The values of all settings at one moment, for rules that read several settings and need consistent values.
/// A default-constructed snapshot holds the registered defaults. A value: copies are independent. current()
/// may be called on any thread.
class Snapshot {
public:
    /// The current contents of the standard store.
    static Snapshot current();

    template <class Value>
    Value value(const Setting<Value>& setting) const {
        return setting.from(object(setting));
    }
    template <class Value>
    QLatin1StringView word(const Setting<Value>& setting) const {
        return setting.wordOf(value(setting));
    }

    /// Sets any number, also one that is not allowed; an enum or a bool is stored as its number.
    template <class Number>
    void set(const Row& setting, Number number) {
        if constexpr (std::is_floating_point_v<Number>) {
            m_values.insert(setting.key, number);
        } else {
            m_values.insert(setting.key, static_cast<qint64>(number));
        }
    }

private:
    QVariant object(const Row& setting) const { return m_values.value(setting.key, setting.defaultValue()); }

    QVariantMap m_values;
};

}  // namespace settings
