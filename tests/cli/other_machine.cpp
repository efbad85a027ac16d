// Loaded into the program by the dynamic linker: makes it another machine's, as far as file systems show.
//
// RAVELIN_MACHINE: its host name. RAVELIN_LOCKS: "none": the file system has none; "local": this process does
// not see those of others. RAVELIN_NO_LINKS: no hard links, and renaming overwrites. RAVELIN_SHARED: all
// volumes are a server's.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <linux/magic.h>
#include <sys/utsname.h>
#include <sys/vfs.h>

namespace {

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

int failing(int error) {
    errno = error;
    return -1;
}

}  // namespace

extern "C" int uname(utsname* system) noexcept {
    static const auto real = next<int (*)(utsname*)>("uname");
    const int result = real(system);
    if (const char* const name = std::getenv("RAVELIN_MACHINE"))
        std::snprintf(system->nodename, sizeof system->nodename, "%s", name);
    return result;
}

extern "C" int statfs(const char* path, struct statfs* system) noexcept {
    static const auto real = next<int (*)(const char*, struct statfs*)>("statfs");
    const int result = real(path, system);
    if (std::getenv("RAVELIN_SHARED")) system->f_type = NFS_SUPER_MAGIC;
    return result;
}

extern "C" int flock(int file, int operation) noexcept {
    static const auto real = next<int (*)(int, int)>("flock");
    const char* const locks = std::getenv("RAVELIN_LOCKS");
    if (!locks) return real(file, operation);
    return std::strcmp(locks, "none") == 0 ? failing(ENOLCK) : 0;
}

extern "C" int link(const char* from, const char* to) noexcept {
    static const auto real = next<int (*)(const char*, const char*)>("link");
    return std::getenv("RAVELIN_NO_LINKS") ? failing(EPERM) : real(from, to);
}

extern "C" int renameat2(int a, const char* from, int b, const char* to, unsigned flags) noexcept {
    static const auto real = next<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
    const bool refuses = flags != 0 && std::getenv("RAVELIN_NO_LINKS");
    return refuses ? failing(EINVAL) : real(a, from, b, to, flags);
}
