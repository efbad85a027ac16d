#pragma once

#include "settings/Setting.h"

/// The settings, one constant for each row of Settings.def: `settings::AutoAdd.value()`. Any thread.
namespace settings {

#define SETTING(key, type, standard, meaning) \
    inline constexpr Setting<type> key{#key, Registration::Listed, static_cast<qint64>(standard), meaning};
#define UNLISTED(key, type, standard, meaning) \
    inline constexpr Setting<type> key{#key, Registration::Unlisted, static_cast<qint64>(standard), meaning};
#define UNREGISTERED(key, type, meaning) \
    inline constexpr Setting<type> key{#key, Registration::None, 0, meaning};
#include "settings/Settings.def"

}  // namespace settings
