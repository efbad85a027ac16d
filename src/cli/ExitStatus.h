#pragma once

namespace exitstatus {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure =
    1;  ///< At least one movie was refused or failed, or a setting could not be saved.
inline constexpr int kUsage = 2;    ///< Wrong usage: nothing was started.
inline constexpr int kDamaged = 3;  ///< Every movie finished, but at least one is not whole.
/// The status after a signal: 130 for Ctrl-C, 143 for SIGTERM. Any thread.
constexpr int afterSignal(int signal) {
    return 128 + signal;
}

}  // namespace exitstatus
