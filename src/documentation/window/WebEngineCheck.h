#pragma once

#include <QString>

/// Checks whether the web engine can run here. An engine that cannot run ends the whole process and all
/// conversions, so its known requirements are checked first. Main thread only.
namespace webengine {

/// Why the engine cannot run, for the log; empty if it can. Starts only a child process that exits at once.
QString obstacle();

}  // namespace webengine
