#include "tool/cage/Landlock.h"

#include <QFile>

#include <algorithm>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace landlock {

namespace {

// The kernel headers of Debian 12 end at version 3.
constexpr quint64 kTruncate = 1 << 14;
constexpr quint64 kNetwork = 0b11;  // Bind and connect of TCP.
constexpr quint64 kScopes = 0b11;   // Abstract unix sockets and signals.

constexpr quint64 kFileRights =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_READ_FILE | kTruncate;

struct Attributes {
    quint64 files;
    quint64 network;
    quint64 scopes;
};

quint64 fileRights(int version) {
    constexpr int kRightsOfVersion1 = 13;
    // One right was added with each of the versions 2, 3 and 5.
    return (quint64{1} << (kRightsOfVersion1 + std::min(version, 3) - 1 + (version >= 5 ? 1 : 0))) - 1;
}

long create(const Attributes* attributes, size_t size, unsigned flags) {
    return ::syscall(SYS_landlock_create_ruleset, attributes, size, flags);
}

}  // namespace

int version() {
    static const long found = create(nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return static_cast<int>(std::max(found, 0L));
}

Place::Place(const QString& path) : m_file(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC)) {
    struct stat status = {};
    if (m_file < 0) return;
    if (::fstat(m_file, &status) != 0) {
        ::close(std::exchange(m_file, -1));
        return;
    }
    m_isFolder = S_ISDIR(status.st_mode);
    m_device = status.st_dev;
    m_inode = status.st_ino;
}

Place::~Place() {
    if (m_file >= 0) ::close(m_file);
}

Ruleset::Ruleset() {
    const int version = landlock::version();
    if (version < 1) return;
    const Attributes attributes = {fileRights(version), version >= 4 ? kNetwork : 0,
                                   version >= 6 ? kScopes : 0};
    // The structure ends earlier in earlier versions.
    const size_t fields = version >= 6 ? 3 : version >= 4 ? 2 : 1;
    m_file = static_cast<int>(create(&attributes, fields * sizeof(quint64), 0));
}

Ruleset::~Ruleset() {
    if (m_file >= 0) ::close(m_file);
}

void Ruleset::allow(const Place& place, quint64 rights) {
    if (!isValid() || !place.isValid()) return;
    if (!place.m_isFolder) rights &= kFileRights;
    const landlock_path_beneath_attr rule = {rights & fileRights(version()), place.m_file};
    ::syscall(SYS_landlock_add_rule, m_file, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
}

void Ruleset::allowReading(const Place& fileOrFolder) {
    allow(fileOrFolder, LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR);
}

void Ruleset::allowWriting(const Place& file) {
    allow(file, LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate);
}

void Ruleset::allowExecuting(const Place& fileOrFolder) {
    allow(fileOrFolder,
          LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR | LANDLOCK_ACCESS_FS_EXECUTE);
}

bool Ruleset::restrictThread() const noexcept {
    return ::syscall(SYS_landlock_restrict_self, m_file, 0) == 0;
}

}  // namespace landlock
