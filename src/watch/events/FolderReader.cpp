#include "watch/events/FolderReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Some file systems store whole seconds only.
bool isSince(const timespec& when, const timespec& time) {
    if (when.tv_sec != time.tv_sec) return when.tv_sec > time.tv_sec;
    return when.tv_nsec == 0 || when.tv_nsec >= time.tv_nsec;
}

bool isDots(std::string_view name) {
    return name == "." || name == "..";
}

}  // namespace

FolderReader::FolderReader(const std::string& path, bool mayBeLink) {
    const int file =
        ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | (mayBeLink ? 0 : O_NOFOLLOW));
    if (file < 0) return;
    m_folder.reset(::fdopendir(file));
    if (!m_folder) ::close(file);
}

std::optional<FolderReader::Entry> FolderReader::next() {
    while (m_folder) {
        const dirent* entry = ::readdir(m_folder.get());
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (!isDots(name)) return Entry{name, kind(*entry)};
    }
    return std::nullopt;
}

FolderReader::Kind FolderReader::kind(const dirent& entry) const {
    switch (entry.d_type) {
        case DT_REG:
        case DT_LNK:
            return Kind::File;
        case DT_DIR:
            return Kind::Folder;
        case DT_UNKNOWN:
            break;
        default:
            return Kind::Other;
    }
    struct stat info = {};
    if (::fstatat(::dirfd(m_folder.get()), entry.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) return Kind::Other;
    if (S_ISDIR(info.st_mode)) return Kind::Folder;
    return S_ISREG(info.st_mode) || S_ISLNK(info.st_mode) ? Kind::File : Kind::Other;
}

bool FolderReader::changedSince(const timespec& time) const {
    struct stat info = {};
    return m_folder && ::fstat(::dirfd(m_folder.get()), &info) == 0 && isSince(info.st_mtim, time);
}

FolderReader::Arrival FolderReader::arrival(const Entry& entry, const timespec& time) const {
    struct stat info = {};
    const std::string name(entry.name);
    if (::fstatat(::dirfd(m_folder.get()), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 ||
        !isSince(info.st_ctim, time))
        return Arrival::Before;
    return isSince(info.st_mtim, time) ? Arrival::New : Arrival::MovedHere;
}
