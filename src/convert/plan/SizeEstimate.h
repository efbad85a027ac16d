#pragma once

#include "convert/plan/ConversionPlan.h"

#include <optional>

/// About how many bytes the output of a plan will have: the movie without the streams that are left out or
/// converted, as far as it declares their bit rates, and with the converted sound. Empty if the movie's size
/// or running time is unknown. Pure; any thread.
std::optional<quint64> estimatedOutputBytes(const MKVFileInfo& info, const ConversionPlan& plan);
