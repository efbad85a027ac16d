/// Runs a program as on a system that lacks some of the restrictions: deprived (files|calls|both) program
/// arguments...
#include <cerrno>
#include <cstring>
#include <seccomp.h>
#include <sys/syscall.h>
#include <unistd.h>

int main(int count, char** values) {
    if (count < 3) return 2;
    scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    const bool areFiles = std::strcmp(values[1], "calls") != 0;
    const bool areCalls = std::strcmp(values[1], "files") != 0;
    int error = 0;
    if (areFiles)
        error |= seccomp_rule_add(filter, SCMP_ACT_ERRNO(EOPNOTSUPP), SYS_landlock_create_ruleset, 0);
    if (areCalls) error |= seccomp_rule_add(filter, SCMP_ACT_ERRNO(EINVAL), SYS_seccomp, 0);
    if (error != 0 || seccomp_load(filter) != 0) return 3;
    ::execv(values[2], values + 2);
    return 4;
}
