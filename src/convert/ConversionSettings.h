#pragma once

#include "settings/Snapshot.h"

/// The settings for a conversion's command, all read at the moment when it is built. A value; any thread.
using ConversionSettings = settings::Snapshot;
