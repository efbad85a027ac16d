#pragma once

#include <linux/filter.h>
#include <vector>

/// A filter of system calls (seccomp) that denies what a program which reads and writes a few open files
/// never needs. What is not listed stays allowed, so that other versions of the tool and of the C library
/// work. Immutable; any thread.
class SystemCallFilter {
public:
    /// `onlyProgram` is the only pointer with which execve() is allowed: the address of a path in this
    /// process, which a program started from it does not know. Null: programs may be started. isValid() is
    /// false where the filter cannot be made.
    explicit SystemCallFilter(const char* onlyProgram);

    bool isValid() const { return !m_instructions.empty(); }

    /// Whether the kernel takes such filters and they can be made for this processor. Asks only, which is
    /// much faster than to make one.
    static bool isSupported() noexcept;

    /// Applies to the calling thread and what it starts, for good. Needs `no_new_privs`. System calls only.
    bool apply() const noexcept;

private:
    std::vector<sock_filter> m_instructions;
};
