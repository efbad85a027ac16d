// Loaded into the program and its tools by the dynamic linker: reads of one file fail, as on a disk that
// goes.
//
// RAVELIN_UNREADABLE: an argument of the processes for which they do, the offset from which on they do, the
// error, how many reads fail, and the file's name.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string_view>
#include <sys/types.h>
#include <unistd.h>

namespace {

char name[NAME_MAX + 1] = "";
long long begin = 0;
int error = 0;
std::atomic<int> failures = 0;

[[gnu::constructor]] void prepare(int count, char** arguments) {
    const char* const text = std::getenv("RAVELIN_UNREADABLE");
    char argument[16] = "";
    int number = 0;
    if (!text || std::sscanf(text, "%15s %lld %d %d %255s", argument, &begin, &error, &number, name) != 5)
        return;
    const auto isMeant = [&](const char* one) { return std::strcmp(one, argument) == 0; };
    if (std::any_of(arguments, arguments + count, isMeant)) failures = number;
}

/// Whether a read at this offset succeeds, and how much of it.
bool mayRead(int file, off64_t offset, size_t& length) {
    if (offset < 0 || failures <= 0) return true;
    char link[64];
    char path[PATH_MAX];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t size = ::readlink(link, path, sizeof path);
    if (size < 0 || !std::string_view(path, static_cast<size_t>(size)).ends_with(name)) return true;
    if (offset < begin) length = std::min(length, static_cast<size_t>(begin - offset));
    if (offset < begin || failures-- <= 0) return true;
    errno = error;
    return false;
}

template <typename Function>
Function next(const char* symbol) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, symbol));
}

}  // namespace

extern "C" ssize_t read(int file, void* into, size_t length) {
    static const auto real = next<ssize_t (*)(int, void*, size_t)>("read");
    return mayRead(file, ::lseek64(file, 0, SEEK_CUR), length) ? real(file, into, length) : -1;
}

#define READING_AT(symbol, Offset)                                                       \
    extern "C" ssize_t symbol(int file, void* into, size_t length, Offset offset) {      \
        static const auto real = next<ssize_t (*)(int, void*, size_t, Offset)>(#symbol); \
        return mayRead(file, offset, length) ? real(file, into, length, offset) : -1;    \
    }

READING_AT(pread, off_t)
READING_AT(pread64, off64_t)
