#pragma once

/// Runs the desktop application and returns the process's exit status. Call it once, on the main thread.
int runApplication(int& argc, char** argv);
