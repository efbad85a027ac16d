#include "convert/ClaimedFile.h"

#include "support/base/FileSteps.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace claimedfile {

namespace {

int create(const QString& path) {
    return ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

bool mark(int file, const QString& id) {
    const QByteArray value = id.toUtf8();
    return ::fsetxattr(file, kMark, value.constData(), static_cast<size_t>(value.size()), 0) == 0;
}

/// The birth is preferred, as FAT invents other inodes later.
Identity identityOf(int folder, const char* path, int flags) {
    struct statx file = {};
    if (::statx(folder, path, flags | AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_INO, &file) != 0) return {};
    if ((file.stx_mask & STATX_BTIME) != 0)
        return QString("born %1.%2").arg(file.stx_btime.tv_sec).arg(file.stx_btime.tv_nsec);
    return QString("inode %1").arg(file.stx_ino);
}

/// Gives the finished claim its name. A link comes first, as a rename looks like a movie that arrived.
int publish(const Claim& claim) {
    const QByteArray temporary = QFile::encodeName(claim.temporary);
    if (::link(temporary.constData(), QFile::encodeName(claim.path).constData()) == 0)
        return filesteps::remove(claim.temporary);
    return errno == EEXIST ? EEXIST : filesteps::renameToFree(claim.temporary, claim.path);
}

}  // namespace

int claim(const Claim& claim, const std::function<bool(const Identity&)>& noteIdentity) {
    const int file = create(claim.temporary);
    if (file < 0) return errno;
    const bool isNoted = mark(file, claim.id) || noteIdentity(identityOf(file, "", AT_EMPTY_PATH));
    ::close(file);
    const int error = isNoted ? publish(claim) : ECANCELED;
    if (error != 0) filesteps::remove(claim.temporary);
    return error;
}

bool isOurs(const QString& path, const QString& id, const Identity& identity) {
    const QByteArray name = QFile::encodeName(path);
    if (!identity.isEmpty()) return identityOf(AT_FDCWD, name.constData(), 0) == identity;
    QByteArray value(64, '\0');
    const ssize_t length =
        ::lgetxattr(name.constData(), kMark, value.data(), static_cast<size_t>(value.size()));
    return length >= 0 && value.first(length) == id.toUtf8();
}

void release(const QString& path) {
    ::lremovexattr(QFile::encodeName(path).constData(), kMark);
}

}  // namespace claimedfile
