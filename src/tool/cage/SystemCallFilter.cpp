#include "tool/cage/SystemCallFilter.h"

#include "tool/cage/Landlock.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/seccomp.h>
#include <linux/sockios.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// Names that an architecture or the library does not know are skipped.
constexpr const char* kDenied[] = {
    // Sockets of any family.
    "socket",
    "socketpair",
    "connect",
    "bind",
    "listen",
    "accept",
    "accept4",
    "sendto",
    "sendmsg",
    "sendmmsg",
    // Other processes.
    "execveat",
    "ptrace",
    "process_vm_readv",
    "process_vm_writev",
    "process_madvise",
    "process_mrelease",
    "kcmp",
    "pidfd_open",
    "pidfd_getfd",
    "pidfd_send_signal",
    "kill",
    "tkill",
    "rt_sigqueueinfo",
    "rt_tgsigqueueinfo",
    "setpgid",
    "setsid",
    "move_pages",
    "migrate_pages",
    // Messages to other processes.
    "shmget",
    "shmat",
    "shmctl",
    "semget",
    "semop",
    "semctl",
    "msgget",
    "msgsnd",
    "msgrcv",
    "msgctl",
    "mq_open",
    "mq_unlink",
    // Namespaces and mounts.
    "unshare",
    "setns",
    "chroot",
    "pivot_root",
    "mount",
    "umount",
    "umount2",
    "mount_setattr",
    "move_mount",
    "open_tree",
    "fsopen",
    "fsconfig",
    "fsmount",
    "fspick",
    // Names and attributes of files: the output exists already and keeps what it has.
    "rename",
    "renameat",
    "renameat2",
    "link",
    "linkat",
    "symlink",
    "symlinkat",
    "unlink",
    "unlinkat",
    "mkdir",
    "mkdirat",
    "rmdir",
    "mknod",
    "mknodat",
    "truncate",
    "truncate64",
    "chmod",
    "fchmod",
    "fchmodat",
    "fchmodat2",
    "chown",
    "chown32",
    "fchown",
    "fchown32",
    "lchown",
    "lchown32",
    "fchownat",
    "utime",
    "utimes",
    "utimensat",
    "utimensat_time64",
    "futimesat",
    "setxattr",
    "lsetxattr",
    "fsetxattr",
    "setxattrat",
    "removexattr",
    "lremovexattr",
    "fremovexattr",
    "removexattrat",
    "open_by_handle_at",
    "name_to_handle_at",
    "file_setattr",
    // Other users and privileges.
    "setuid",
    "setgid",
    "setreuid",
    "setregid",
    "setresuid",
    "setresgid",
    "setfsuid",
    "setfsgid",
    "setgroups",
    "capset",
    // Wide, rarely used parts of the kernel.
    "add_key",
    "keyctl",
    "request_key",
    "io_uring_setup",
    "io_uring_enter",
    "io_uring_register",
    "bpf",
    "perf_event_open",
    "userfaultfd",
    "fanotify_init",
    "fanotify_mark",
    "lookup_dcookie",
    "vmsplice",
    "personality",
    "modify_ldt",
    "iopl",
    "ioperm",
    // The machine.
    "reboot",
    "kexec_load",
    "kexec_file_load",
    "init_module",
    "finit_module",
    "delete_module",
    "swapon",
    "swapoff",
    "acct",
    "quotactl",
    "quotactl_fd",
    "sethostname",
    "setdomainname",
    "settimeofday",
    "clock_settime",
    "clock_settime64",
    "stime",
    "adjtimex",
    "clock_adjtime",
    "clock_adjtime64",
    "syslog",
    "vhangup",
    "nfsservctl",
};

constexpr uint32_t kDeny = SCMP_ACT_ERRNO(EPERM);

using Context = std::unique_ptr<void, decltype(&seccomp_release)>;

/// No process but this one, and no program but this.
bool denyPrograms(void* filter, const char* program) {
    const auto address = reinterpret_cast<scmp_datum_t>(program);
    const auto deny = [&](int call) { return call < 0 || seccomp_rule_add(filter, kDeny, call, 0) == 0; };
    // glibc uses clone() if clone3(), whose arguments a filter cannot see, does not exist.
    return deny(SCMP_SYS(fork)) && deny(SCMP_SYS(vfork)) &&
           seccomp_rule_add(filter, kDeny, SCMP_SYS(clone), 1,
                            SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0)) == 0 &&
           seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0 &&
           seccomp_rule_add(filter, SCMP_ACT_ERRNO(EACCES), SCMP_SYS(execve), 1,
                            SCMP_A0(SCMP_CMP_NE, address)) == 0;
}

/// Conditions on the arguments.
bool addConditions(void* filter) {
    // Where Landlock confines signals, abort() and pthread_kill() work.
    constexpr int kVersionWithSignals = 6;
    const bool areSignalsDenied = landlock::version() >= kVersionWithSignals ||
                                  seccomp_rule_add(filter, kDeny, SCMP_SYS(tgkill), 0) == 0;
    const auto denyArgument = [&](int call, const scmp_arg_cmp& condition) {
        return seccomp_rule_add(filter, kDeny, call, 1, condition) == 0;
    };
    return areSignalsDenied &&
           // The kernel ends the tool when the application dies.
           denyArgument(SCMP_SYS(prctl), SCMP_A0(SCMP_CMP_EQ, PR_SET_PDEATHSIG)) &&
           denyArgument(SCMP_SYS(prlimit64), SCMP_A0(SCMP_CMP_NE, 0)) &&
           // Signals and keystrokes on the way over a file.
           denyArgument(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_SETOWN)) &&
           denyArgument(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_SETOWN_EX)) &&
           denyArgument(SCMP_SYS(ioctl), SCMP_A1(SCMP_CMP_EQ, FIOSETOWN)) &&
           denyArgument(SCMP_SYS(ioctl), SCMP_A1(SCMP_CMP_EQ, SIOCSPGRP)) &&
           denyArgument(SCMP_SYS(ioctl), SCMP_A1(SCMP_CMP_EQ, TIOCSTI)) &&
           denyArgument(SCMP_SYS(ioctl), SCMP_A1(SCMP_CMP_EQ, TIOCLINUX));
}

bool addRules(void* filter, const char* onlyProgram) {
    for (const char* name : kDenied) {
        const int call = seccomp_syscall_resolve_name(name);
        if (call < 0) continue;
        if (seccomp_rule_add(filter, kDeny, call, 0) != 0) return false;
    }
    return addConditions(filter) && (!onlyProgram || denyPrograms(filter, onlyProgram));
}

/// The library of Debian 12 exports to files only.
std::vector<sock_filter> exported(void* filter) {
    const int file = ::memfd_create("filter", MFD_CLOEXEC);
    if (file < 0) return {};
    std::vector<sock_filter> instructions;
    if (seccomp_export_bpf(filter, file) == 0) {
        const off_t size = ::lseek(file, 0, SEEK_END);
        instructions.resize(static_cast<size_t>(size) / sizeof(sock_filter));
        if (::pread(file, instructions.data(), static_cast<size_t>(size), 0) != size) instructions.clear();
    }
    ::close(file);
    return instructions;
}

}  // namespace

SystemCallFilter::SystemCallFilter(const char* onlyProgram) {
    const Context filter(seccomp_init(SCMP_ACT_ALLOW), &seccomp_release);
    if (!filter) return;
    constexpr uint32_t kBinaryTree = 2;  // A list of 150 comparisons would slow down every call.
    seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_OPTIMIZE, kBinaryTree);
    seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS);
    if (addRules(filter.get(), onlyProgram)) m_instructions = exported(filter.get());
}

bool SystemCallFilter::isSupported() noexcept {
    const uint32_t action = SECCOMP_RET_ERRNO;
    return seccomp_arch_native() != 0 && ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

bool SystemCallFilter::apply() const noexcept {
    const sock_fprog program = {static_cast<unsigned short>(m_instructions.size()),
                                const_cast<sock_filter*>(m_instructions.data())};
    return ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) == 0;
}
