#include "tool/cage/Cage.h"

#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/processes/ChildProcess.h"
#include "tool/cage/Landlock.h"
#include "tool/cage/Programs.h"
#include "tool/cage/SystemCallFilter.h"

#include <QFile>
#include <QMutex>
#include <QProcess>
#include <QProcessEnvironment>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <limits.h>
#include <linux/capability.h>
#include <memory>
#include <mutex>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace cage {

namespace {

/// Writable memory of the tool. A movie of 4K HEVC with eight sound tracks takes 0.1 GiB; the packets that
/// wait for a sound track that starts late can take much more.
constexpr rlim_t kMaximumMemory = rlim_t{4} << 30;
/// With what is reserved but never used: the C library reserves 64 MiB for each thread.
constexpr rlim_t kMaximumAddressSpace = rlim_t{16} << 30;

/// The tool's path, at an address that stays: the filter is made once.
class ProgramPath {
public:
    /// False: the path is too long.
    bool set(const QString& path) {
        const QByteArray encoded = QFile::encodeName(path);
        const QMutexLocker lock(&m_mutex);
        if (encoded == m_path.data()) return true;
        if (encoded.size() >= static_cast<qsizetype>(m_path.size())) return false;
        std::memcpy(m_path.data(), encoded.constData(), static_cast<size_t>(encoded.size()) + 1);
        return true;
    }
    const char* data() const { return m_path.data(); }

private:
    QMutex m_mutex;
    std::array<char, PATH_MAX> m_path = {};
};

// Nothing static is destroyed here: threads that nobody waits for may still start the tool at exit.

ProgramPath& programPath() {
    static auto& path = *new ProgramPath;
    return path;
}

const SystemCallFilter& filter() {
    static const auto& made = *new SystemCallFilter(programPath().data());
    return made;
}

/// A script consists of programs; they run in the same cage.
const SystemCallFilter& filterOfScripts() {
    static const auto& made = *new SystemCallFilter(nullptr);
    return made;
}

bool isScript(const QStringList& executed) {
    constexpr qsizetype kProgramAndLoader = 2;
    return executed.size() > kProgramAndLoader;
}

/// What every program reads. Opened once: none of it is replaced by another file while the system runs.
const std::vector<landlock::Place>& placesOfSystem() {
    static const std::vector<landlock::Place>& places = *[] {
        auto* found = new std::vector<landlock::Place>;
        const QStringList paths =
            programs::systemLibraries() + QStringList{"/dev/urandom",
                                                      "/dev/random",
                                                      "/sys/devices/system/cpu",
                                                      "/sys/devices/system/node",
                                                      "/proc/cpuinfo",
                                                      "/proc/filesystems",
                                                      "/sys/kernel/mm/transparent_hugepage/enabled",
                                                      "/sys/kernel/mm/transparent_hugepage/hpage_pmd_size"};
        for (const QString& path : paths) {
            landlock::Place place(path);
            const bool isKnown =
                std::ranges::any_of(*found, [&](const auto& other) { return place.isSameAs(other); });
            if (place.isValid() && !isKnown) found->push_back(std::move(place));
        }
        return found;
    }();
    return places;
}

// ---- In the child: system calls only.

void limit(__rlimit_resource resource, rlim_t maximum) noexcept {
    rlimit present = {};
    if (::getrlimit(resource, &present) != 0) return;
    present.rlim_max = std::min(present.rlim_max, maximum);
    present.rlim_cur = std::min(present.rlim_cur, maximum);
    ::setrlimit(resource, &present);
}

bool setCapabilities(quint64 wanted) noexcept {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    for (int i = 0; i < _LINUX_CAPABILITY_U32S_3; ++i)
        data[i].effective = data[i].permitted = data[i].inheritable = static_cast<__u32>(wanted >> (32 * i));
    return ::syscall(SYS_capset, &header, data) == 0;
}

bool isReachable(const char* path, int access) noexcept {
    return ::syscall(SYS_faccessat2, AT_FDCWD, path, access, AT_EACCESS) == 0 || errno == ENOENT;
}

/// The terminated strings that a list of texts becomes, and the array of pointers to them.
class Strings {
public:
    explicit Strings(const QStringList& texts) {
        for (const QString& text : texts)
            m_bytes.push_back(QFile::encodeName(text));
        for (QByteArray& bytes : m_bytes)
            m_pointers.push_back(bytes.data());
        m_pointers.push_back(nullptr);
    }
    char* const* data() const noexcept { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_bytes;
    std::vector<char*> m_pointers;
};

/// All that the child needs, made before it exists.
class Entry {
public:
    Entry(const QProcess& process, const QStringList& executed, const Room& room, CageMode mode)
        : m_arguments(QStringList(process.program()) + process.arguments()),
          m_environment(process.processEnvironment().toStringList()),
          m_readable(room.readable),
          m_writable(room.writable),
          m_maximumFileBytes(room.maximumFileBytes),
          m_filter(isScript(executed) ? filterOfScripts() : filter()),
          m_isStrict(mode == CageMode::Strict) {
        for (const QString& path : executed)
            m_rules.allowExecuting(landlock::Place(path));
        for (const char* folder : {"/usr", "/bin", "/sbin"}) {
            if (isScript(executed)) m_rules.allowExecuting(landlock::Place(folder));
        }
        for (const landlock::Place& place : placesOfSystem())
            m_rules.allowReading(place);
        for (const QString& path : programs::libraries(process.program()) + room.readable)
            m_rules.allowReading(landlock::Place(path));
        for (const QString& path : room.writable + QStringList("/dev/null"))
            m_rules.allowWriting(landlock::Place(path));
    }

    /// Returns only if the program cannot be executed.
    void start() const noexcept {
        limit(RLIMIT_CORE, 0);
        limit(RLIMIT_DATA, kMaximumMemory);
        limit(RLIMIT_AS, kMaximumAddressSpace);
        limit(RLIMIT_FSIZE, m_maximumFileBytes);
        ::signal(SIGXFSZ, SIG_IGN);  // The tool then reports the error.
        dropCapabilities();
        ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
        ::syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, 1U << 2 /* CLOSE_RANGE_CLOEXEC */);
        const bool areFilesDenied = m_rules.isValid() && m_rules.restrictThread();
        const bool areCallsDenied = m_filter.isValid() && m_filter.apply();
        if (m_isStrict && !(areFilesDenied && areCallsDenied)) {
            static constexpr char message[] = "The conversion tool was not started: it could not be caged.\n";
            static_cast<void>(!::write(STDERR_FILENO, message, sizeof message - 1));
            ::_exit(1);
        }
        ::execve(programPath().data(), m_arguments.data(), m_environment.data());
    }

private:
    /// Root can use files that only their owner may read or write, and shall do so in the cage, too: the two
    /// rights for that stay if the files of the room need them.
    void dropCapabilities() const noexcept {
        constexpr quint64 kFileCapabilities = 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH;
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
        ::syscall(SYS_capget, &header, data);
        const quint64 ours = data[0].permitted | quint64{data[1].permitted} << 32;
        ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
        if (ours == 0) return;
        const quint64 kept = isReachableWithout(ours) ? 0 : ours & kFileCapabilities;
        for (int capability = 0; capability < 64; ++capability) {
            if ((kept >> capability & 1) == 0) ::prctl(PR_CAPBSET_DROP, capability, 0, 0, 0);
        }
        setCapabilities(kept);
    }

    /// Leaves the capabilities permitted, but not effective.
    bool isReachableWithout(quint64 permitted) const noexcept {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
        data[0].permitted = static_cast<__u32>(permitted);
        data[1].permitted = static_cast<__u32>(permitted >> 32);
        ::syscall(SYS_capset, &header, data);
        bool isReachable = true;
        for (char* const* path = m_readable.data(); *path; ++path)
            isReachable = isReachable && cage::isReachable(*path, R_OK);
        for (char* const* path = m_writable.data(); *path; ++path)
            isReachable = isReachable && cage::isReachable(*path, R_OK | W_OK);
        // The bounding set can be changed only with an effective capability.
        data[0].effective = data[0].permitted;
        data[1].effective = data[1].permitted;
        ::syscall(SYS_capset, &header, data);
        return isReachable;
    }

    Strings m_arguments;
    Strings m_environment;
    Strings m_readable;
    Strings m_writable;
    rlim_t m_maximumFileBytes;
    const SystemCallFilter& m_filter;
    bool m_isStrict;
    landlock::Ruleset m_rules;
};

// ---- In the application.

Parts asked() {
    Parts parts;
    parts.files = landlock::version() > 0;
    parts.systemCalls = SystemCallFilter::isSupported();
    constexpr int kVersionWithNetwork = 4;
    parts.network = parts.systemCalls || landlock::version() >= kVersionWithNetwork;
    return parts;
}

QStringList names(bool isAvailable) {
    const Parts& parts = available();
    QStringList names;
    if (parts.files == isAvailable) names.append(Texts::tr("files"));
    if (parts.network == isAvailable) names.append(Texts::tr("network"));
    if (parts.systemCalls == isAvailable) names.append(Texts::tr("system calls"));
    return names;
}

void logOnce(std::once_flag& isLogged, const QString& line) {
    std::call_once(isLogged, [&] { qn_log_message(kLogError, line); });
}

}  // namespace

const Parts& available() {
    static const Parts parts = asked();
    return parts;
}

QString description() {
    const QStringList parts = names(true);
    return parts.isEmpty() ? Texts::tr("none") : parts.join(", ");
}

QString refusal(CageMode mode) {
    if (mode != CageMode::Strict || available().isWhole()) return {};
    return Texts::tr(
               "The conversion tool was not started because this system cannot restrict it (missing: %1).")
        .arg(names(false).join(", "));
}

void enclose(QProcess& process, const Room& room, CageMode mode) {
    static std::once_flag isOffLogged;
    static std::once_flag isLackLogged;
    if (mode == CageMode::Off) {
        logOnce(isOffLogged, "Error: the conversion tool is started without its cage");
        return;
    }
    if (!available().isWhole())
        logOnce(isLackLogged, "Error: the cage of the conversion tool lacks: " + names(false).join(", "));
    // The start fails, and its error tells why.
    if (!QFile::exists(process.program()) || !programPath().set(process.program())) return;
    QStringList executed = programs::executed(process.program());
    // A file that may be executed but not read starts in the cage, too, if it needs no loader.
    if (executed.isEmpty()) executed = {process.program()};
    const auto entry = std::make_shared<const Entry>(process, executed, room, mode);
    childprocess::runInChild(process, [entry] { entry->start(); });
}

}  // namespace cage
