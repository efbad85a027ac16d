#include "convert/ClaimedFile.h"

#include "support/base/FileSteps.h"
#include "support/base/Volume.h"

#include <QFile>
#include <QFileInfo>

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

bool isSameFile(const QByteArray& a, const QByteArray& b) {
    struct stat first = {};
    struct stat second = {};
    return ::lstat(a.constData(), &first) == 0 && ::lstat(b.constData(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// Gives the finished claim its name. A link comes first, as a rename looks like a movie that arrived.
int publish(const Claim& claim) {
    const QByteArray temporary = QFile::encodeName(claim.temporary);
    const QByteArray path = QFile::encodeName(claim.path);
    const int error = ::link(temporary.constData(), path.constData()) == 0 ? 0 : errno;
    // A server whose answer was lost refuses the same request when it is repeated.
    if (error == 0 || isSameFile(temporary, path)) return filesteps::remove(claim.temporary);
    if (error == EEXIST) return EEXIST;
    return volume::isShared(QFileInfo(claim.path).path())
               ? filesteps::renameToCreated(claim.temporary, claim.path)
               : filesteps::renameToFree(claim.temporary, claim.path);
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
    if (!identity.isEmpty()) return identityOf(AT_FDCWD, QFile::encodeName(path).constData(), 0) == identity;
    return filesteps::attribute(path, kMark) == id.toUtf8();
}

Mark markOf(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    if (::lgetxattr(name.constData(), kMark, nullptr, 0) >= 0) return Mark::Set;
    return errno == ENODATA || errno == ENOENT ? Mark::NotSet : Mark::NotKnown;
}

bool isBeingWritten(const QString& path) {
    constexpr qint64 kLongestSilence = 3600;  // seconds; while an output is compared nothing changes
    const auto file = FileStamp::of(path);
    return file && file->secondsAgo() < kLongestSilence && markOf(path) == Mark::Set;
}

void noteSource(const QString& path, const FileStamp& source) {
    filesteps::setAttribute(path, kSource, source.toText());
}

std::optional<FileStamp> sourceOf(const QString& path) {
    return FileStamp::fromText(filesteps::attribute(path, kSource).value_or(QByteArray()));
}

void release(const QString& path) {
    ::lremovexattr(QFile::encodeName(path).constData(), kSource);
    ::lremovexattr(QFile::encodeName(path).constData(), kMark);
}

}  // namespace claimedfile
