#pragma once

#include "cli/CommandLine.h"

/// Each function runs one command to its end and returns the exit status. Main thread only.

int runProbe(const ProbeOptions& options, const CommandLine& line);
int runPlan(const PlanOptions& options, const CommandLine& line);
int runConvert(const ConvertOptions& options, const CommandLine& line);
int runWatch(const WatchOptions& options, const CommandLine& line);
int runSettings(const SettingsOptions& options);
int runDoctor(const DoctorOptions& options);
