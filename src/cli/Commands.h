#pragma once

#include "cli/CommandLine.h"

/// Each command runs to its end and returns the exit status.

int runProbe(const ProbeOptions& options, const CommandLine& line);
int runConvert(const ConvertOptions& options, const CommandLine& line);
int runWatch(const WatchOptions& options, const CommandLine& line);
int runSettings(const SettingsOptions& options);
