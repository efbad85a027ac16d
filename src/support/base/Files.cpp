#include "support/base/Files.h"

#include "support/base/Format.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace files {

namespace {

constexpr qsizetype kLongestName = 255;  // bytes

/// Index of the extension's dot, -1 without an extension.
qsizetype extensionPoint(const QString& path) {
    const qsizetype name = path.lastIndexOf(u'/') + 1;
    const qsizetype point = path.lastIndexOf(u'.');
    return point > name ? point : -1;
}

/// A broken symbolic link occupies its name, too.
bool isOccupied(const QString& path) {
    return QFileInfo::exists(path) || QFileInfo(path).isSymLink();
}

/// Checks and creates atomically, so that a file created by others meanwhile is never overwritten. Returns
/// the descriptor, or -1.
int createNew(const QString& path) {
    return ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

}  // namespace

bool fileExists(const QString& path) {
    return QFileInfo::exists(path);
}

bool fileExists(const QUrl& url) {
    return url.isLocalFile() && fileExists(url.toLocalFile());
}

std::optional<QByteArray> contents(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    return file.readAll();
}

quint64 fileSize(const QUrl& url) {
    const QFileInfo file(url.toLocalFile());
    return file.isDir() ? 0 : static_cast<quint64>(file.size());
}

QString pathExtension(const QString& path) {
    const qsizetype point = extensionPoint(path);
    return point < 0 ? QString() : path.sliced(point + 1);
}

QString withoutExtension(const QString& path) {
    const qsizetype point = extensionPoint(path);
    return point < 0 ? path : path.first(point);
}

QString fittingFileName(const QString& stem, const QString& ending) {
    const qsizetype room = kLongestName - ending.toUtf8().size();
    QString fitting = stem;
    while (!fitting.isEmpty() && fitting.toUtf8().size() > room) {
        fitting.chop(fitting.size() > 1 && fitting.back().isLowSurrogate() ? 2 : 1);
    }
    return fitting + ending;
}

QString uniqueFile(const QString& path, const std::function<bool(const QString&)>& taken) {
    const qsizetype name = path.lastIndexOf(u'/') + 1;
    const QString folder = path.first(name);
    const QString stem = withoutExtension(path).sliced(name);
    const QString extension = pathExtension(path);
    const QString ending = extension.isEmpty() ? QString() : u'.' + extension;
    const QString fitting =
        path.sliced(name).toUtf8().size() > kLongestName ? folder + fittingFileName(stem, ending) : path;
    if (!taken(fitting)) return fitting;
    for (int counter = 0;; ++counter) {
        const QString candidate = folder + fittingFileName(stem, makeString("-%i.%@", counter, extension));
        if (!taken(candidate)) return candidate;
    }
}

QString uniqueFile(const QString& path) {
    return uniqueFile(path, isOccupied);
}

QString claimUniqueFile(const QString& path, const std::function<bool(const QString&)>& taken) {
    for (;;) {
        const QString candidate =
            uniqueFile(path, [&](const QString& name) { return isOccupied(name) || (taken && taken(name)); });
        const int file = createNew(candidate);
        if (file >= 0) ::close(file);
        if (file >= 0 || errno != EEXIST) return candidate;
    }
}

bool isAtOrBelow(const QString& path, const QString& folder) {
    const QString inside = folder.endsWith(u'/') ? folder : folder + u'/';
    return path == folder || path.startsWith(inside);
}

QString withFolderMoved(const QString& path, const QString& folder, const QString& newFolder) {
    if (!isAtOrBelow(path, folder)) return path;
    const QString rest = path.sliced(folder.endsWith(u'/') ? folder.size() - 1 : folder.size());
    const QString moved = (newFolder.endsWith(u'/') ? newFolder.chopped(1) : newFolder) + rest;
    return moved.isEmpty() ? QStringLiteral("/") : moved;
}

std::optional<bool> isWriteablePath(const QString& path) {
    struct stat existing = {};
    if (::lstat(QFile::encodeName(path).constData(), &existing) == 0 || errno != ENOENT) return false;
    const QString folder = QFileInfo(path).path();
    if (!QFileInfo(folder).isDir()) return false;
    // A file without a name, of which nothing is left when the process is killed.
    const int file = ::open(QFile::encodeName(folder).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0) {
        const bool isUnsupported =
            errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL || errno == ENOENT;
        return isUnsupported ? std::nullopt : std::optional(false);
    }
    const bool written = ::write(file, "TEST", 4) == 4;
    ::close(file);
    return written;
}

QString makeTempFilepath(const QString& extension) {
    QTemporaryFile file(QDir::tempPath() + "/ravelin-XXXXXX" + (extension.isEmpty() ? "" : u'.' + extension));
    file.setAutoRemove(false);
    return file.open() ? file.fileName() : QString();
}

QString makeTempDirectory() {
    QTemporaryDir folder(QDir::tempPath() + "/ravelin-XXXXXX");
    folder.setAutoRemove(false);
    return folder.isValid() ? folder.path() : QString();
}

bool fileIsAlias(const QUrl& url) {
    const QString path = url.toLocalFile();
    QFile file(path);
    if (QFileInfo(path).isSymLink() && ::access(QFile::encodeName(path).constData(), R_OK) != 0) return true;
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) return false;
    return file.read(12) == QByteArray("book\0\0\0\0mark", 12);
}

}  // namespace files
