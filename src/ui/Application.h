#pragma once

/// The desktop application from its first line to its last. Returns the process's exit status.
int runApplication(int& argc, char** argv);
