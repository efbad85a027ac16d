#include "support/base/FileSteps.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace filesteps {

namespace {

int ignoringUnsupported(int error) {
    return error == EINVAL || error == ENOTSUP || error == ENOSYS ? 0 : error;
}

template <typename Sync>
int syncPath(const QString& path, int flags, Sync&& sync) {
    const int file = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC);
    if (file < 0) return errno;
    const int error = sync(file) == 0 ? 0 : ignoringUnsupported(errno);
    ::close(file);
    return error;
}

}  // namespace

int writeAndSync(int descriptor, const QByteArray& bytes) {
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count =
            ::write(descriptor, bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR) return errno;
        if (count > 0) written += count;
    }
    return ::fsync(descriptor) == 0 ? 0 : ignoringUnsupported(errno);
}

int sync(const QString& path) {
    if (const int error = syncPath(path, O_RDONLY, ::fdatasync)) return error;
    return syncFolder(QFileInfo(path).path());
}

int syncFolder(const QString& folder) {
    return syncPath(folder, O_RDONLY | O_DIRECTORY, ::fsync);
}

int rename(const QString& from, const QString& to) {
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0 ? 0 : errno;
}

int renameToFree(const QString& from, const QString& to) {
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    if (::link(source.constData(), target.constData()) == 0) return remove(from);
    if (errno == EEXIST || errno == ENOENT) return errno;
    return renameToCreated(from, to);
}

int renameToCreated(const QString& from, const QString& to) {
    constexpr mode_t kMode = 0666;
    const int file =
        ::open(QFile::encodeName(to).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    if (file < 0) return errno;
    ::close(file);
    const int error = rename(from, to);
    if (error != 0) remove(to);
    return error;
}

int remove(const QString& path) {
    if (::unlink(QFile::encodeName(path).constData()) == 0) return 0;
    return errno == ENOENT || errno == ENOTDIR ? 0 : errno;
}

std::optional<QByteArray> attribute(const QString& path, const char* name) {
    constexpr qsizetype kMost = 4096;
    QByteArray value(kMost, '\0');
    const ssize_t length = ::lgetxattr(QFile::encodeName(path).constData(), name, value.data(),
                                       static_cast<size_t>(value.size()));
    if (length < 0) return std::nullopt;
    value.truncate(length);
    return value;
}

int setAttribute(const QString& path, const char* name, const QByteArray& value) {
    const auto size = static_cast<size_t>(value.size());
    return ::lsetxattr(QFile::encodeName(path).constData(), name, value.constData(), size, 0) == 0 ? 0
                                                                                                   : errno;
}

int makeEmpty(const QString& path) {
    const int file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (file < 0) return errno;
    ::close(file);
    return 0;
}

bool isTaken(const QString& path) {
    struct stat file = {};
    return ::lstat(QFile::encodeName(path).constData(), &file) == 0;
}

}  // namespace filesteps
