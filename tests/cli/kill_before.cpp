// Loaded into the program by the dynamic linker: kills it in front of its n-th call that changes files.
//
// RAVELIN_KILL_BEFORE: n. RAVELIN_KILLED: the program's name, by default ravelin-cli. RAVELIN_STEPS: a file
// that gets the number of these calls. RAVELIN_PLAIN_VOLUME: no attributes, links and unnamed files, as on
// FAT.

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

/// Only the program itself, not its tools.
bool isMeant() {
    static const char* const name = std::getenv("RAVELIN_KILLED");
    static const bool meant = std::strcmp(program_invocation_short_name, name ? name : "ravelin-cli") == 0;
    return meant;
}

bool isPlain() {
    static const bool plain = std::getenv("RAVELIN_PLAIN_VOLUME") != nullptr;
    return plain && isMeant();
}

std::atomic<int> steps = 0;

void step() {
    static const char* const text = std::getenv("RAVELIN_KILL_BEFORE");
    static const int last = text ? std::atoi(text) : 0;
    if (isMeant() && ++steps == last) ::kill(::getpid(), SIGKILL);
}

[[gnu::destructor]] void writeNumber() {
    const char* const path = std::getenv("RAVELIN_STEPS");
    std::FILE* const file = path && isMeant() ? std::fopen(path, "w") : nullptr;
    if (!file) return;
    std::fprintf(file, "%d", steps.load());
    std::fclose(file);
}

bool isRegular(int file) {
    struct stat status = {};
    return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

int failing(int error) {
    errno = error;
    return -1;
}

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list arguments) {
    const bool has = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return has ? va_arg(arguments, mode_t) : 0;
}

/// False: the volume cannot do it.
bool stepOpening(int flags) {
    if ((flags & O_TMPFILE) == O_TMPFILE && isPlain()) return false;
    if ((flags & (O_CREAT | O_TRUNC)) != 0) step();
    return true;
}

}  // namespace

extern "C" ssize_t lgetxattr(const char* path, const char* name, void* value, size_t size) {
    static const auto real = next<ssize_t (*)(const char*, const char*, void*, size_t)>("lgetxattr");
    return isPlain() ? failing(ENOTSUP) : real(path, name, value, size);
}

// A call that changes files, with its parameters and arguments.
#define CHANGING(result, name, parameters, arguments)               \
    extern "C" result name parameters {                             \
        static const auto real = next<result(*) parameters>(#name); \
        step();                                                     \
        return real arguments;                                      \
    }
// The same for one that a plain volume does not know.
#define UNKNOWN_TO_PLAIN(result, name, parameters, arguments, error) \
    extern "C" result name parameters {                              \
        static const auto real = next<result(*) parameters>(#name);  \
        if (isPlain()) return failing(error);                        \
        step();                                                      \
        return real arguments;                                       \
    }
// The same for one that may concern a pipe.
#define WRITING(name, parameters, arguments)                         \
    extern "C" ssize_t name parameters {                             \
        static const auto real = next<ssize_t(*) parameters>(#name); \
        if (isRegular(file)) step();                                 \
        return real arguments;                                       \
    }
#define OPENING(name)                                                              \
    extern "C" int name(const char* path, int flags, ...) {                        \
        static const auto real = next<int (*)(const char*, int, ...)>(#name);      \
        va_list arguments;                                                         \
        va_start(arguments, flags);                                                \
        const mode_t mode = modeOf(flags, arguments);                              \
        va_end(arguments);                                                         \
        return stepOpening(flags) ? real(path, flags, mode) : failing(EOPNOTSUPP); \
    }
#define OPENING_AT(name)                                                                   \
    extern "C" int name(int folder, const char* path, int flags, ...) {                    \
        static const auto real = next<int (*)(int, const char*, int, ...)>(#name);         \
        va_list arguments;                                                                 \
        va_start(arguments, flags);                                                        \
        const mode_t mode = modeOf(flags, arguments);                                      \
        va_end(arguments);                                                                 \
        return stepOpening(flags) ? real(folder, path, flags, mode) : failing(EOPNOTSUPP); \
    }

OPENING(open)
OPENING(open64)
OPENING_AT(openat)
OPENING_AT(openat64)
WRITING(write, (int file, const void* bytes, size_t length), (file, bytes, length))
WRITING(pwrite, (int file, const void* bytes, size_t length, off_t at), (file, bytes, length, at))
WRITING(pwrite64, (int file, const void* bytes, size_t length, off64_t at), (file, bytes, length, at))
CHANGING(int, ftruncate, (int file, off_t length), (file, length))
CHANGING(int, ftruncate64, (int file, off64_t length), (file, length))
CHANGING(int, truncate, (const char* path, off_t length), (path, length))
CHANGING(int, truncate64, (const char* path, off64_t length), (path, length))
CHANGING(int, fsync, (int file), (file))
CHANGING(int, fdatasync, (int file), (file))
CHANGING(int, mkdir, (const char* path, mode_t mode), (path, mode))
CHANGING(int, rmdir, (const char* path), (path))
CHANGING(int, unlink, (const char* path), (path))
CHANGING(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags))
CHANGING(int, remove, (const char* path), (path))
CHANGING(int, rename, (const char* from, const char* to), (from, to))
CHANGING(int, renameat, (int a, const char* from, int b, const char* to), (a, from, b, to))
CHANGING(int, renameat2, (int a, const char* from, int b, const char* to, unsigned flags),
         (a, from, b, to, flags))
CHANGING(int, lremovexattr, (const char* path, const char* name), (path, name))
UNKNOWN_TO_PLAIN(int, link, (const char* from, const char* to), (from, to), EPERM)
UNKNOWN_TO_PLAIN(int, lsetxattr,
                 (const char* path, const char* name, const void* value, size_t size, int flags),
                 (path, name, value, size, flags), ENOTSUP)
UNKNOWN_TO_PLAIN(int, fsetxattr, (int file, const char* name, const void* value, size_t size, int flags),
                 (file, name, value, size, flags), ENOTSUP)
