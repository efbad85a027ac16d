#pragma once

#include "convert/proof/Receipt.h"

#include <QJsonObject>

namespace json {

/// "verdict", "tracks", "damage" and "notes". The keys are a contract with the scripts that read them. Pure;
/// any thread.
QJsonObject receipt(const Receipt& receipt);

}  // namespace json
