#pragma once

#include "settings/Snapshot.h"

/// The settings that shape a conversion's command, read together when it is built.
using ConversionSettings = settings::Snapshot;
