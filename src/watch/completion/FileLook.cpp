#include "watch/completion/FileLook.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using writercheck::Sight;
using writercheck::Writers;

std::chrono::nanoseconds since1970(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

FileLook::Found foundBy(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ELOOP:
        case ENAMETOOLONG:
        case EACCES:  // A parent folder is not accessible.
        case ENXIO:   // The file was replaced by a socket meanwhile.
            return FileLook::Found::NoFile;
        default:
            return FileLook::Found::Unclear;
    }
}

void applyStatus(FileLook& look, const struct stat& status) {
    look.found = S_ISREG(status.st_mode) ? FileLook::Found::File : FileLook::Found::NoFile;
    look.shape = {status.st_dev, status.st_ino, status.st_size, since1970(status.st_mtim)};
    look.changed = since1970(status.st_ctim);
    look.hasOtherNames = status.st_nlink > 1;
}

}  // namespace

FileLook lookAt(const QString& path, const FileLook::Sources& sources) {
    FileLook look;
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (::stat(name.constData(), &status) != 0) {
        look.found = foundBy(errno);
        return look;
    }
    applyStatus(look, status);
    if (look.found != FileLook::Found::File) return look;
    look.sight = sources.sight(path);
    look.isSymbolicLink = ::lstat(name.constData(), &status) == 0 && S_ISLNK(status.st_mode);

    // Open it on network volumes, too: this makes the client request the size from the server; otherwise it
    // may be a minute old.
    const int file = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) {
        if (errno == EWOULDBLOCK)
            look.writers = Writers::Some;  // A file server held a lease on it, and is releasing it now.
        else if (errno != EACCES && errno != EPERM)  // For an unreadable file, the writers stay unknown.
            look.found = foundBy(errno);
        return look;
    }
    // A network client may refuse a lease for other reasons, which would look like a writer.
    if (look.sight != Sight::None) look.writers = sources.writers(file);
    // After the lease, so that the times include any writes since then.
    if (::fstat(file, &status) == 0)
        applyStatus(look, status);
    else
        look.found = FileLook::Found::Unclear;
    ::close(file);
    return look;
}
