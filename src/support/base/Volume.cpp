#include "support/base/Volume.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <linux/magic.h>
#include <sys/vfs.h>

namespace volume {

std::optional<quint64> freeBytes(const QString& folder) {
    const QStorageInfo storage(folder);
    if (!storage.isValid() || storage.bytesAvailable() < 0) return std::nullopt;
    return static_cast<quint64>(storage.bytesAvailable());
}

std::optional<quint64> maximumFileSize(const QString& folder) {
    struct statfs information = {};
    if (::statfs(QFile::encodeName(folder).constData(), &information) != 0) return std::nullopt;
    return maximumFileSizeOfType(static_cast<long>(information.f_type));
}

std::optional<quint64> maximumFileSizeOfType(long magic) {
    constexpr quint64 kFat = 0xFFFFFFFF;  // The directory entry has 32 bits for the size.
    if (magic == MSDOS_SUPER_MAGIC) return kFat;
    return std::nullopt;
}

QString mountPoint(const QString& folder) {
    QString existing = folder;
    while (!QFileInfo::exists(existing) && existing.contains(u'/') && existing != u"/")
        existing = QFileInfo(existing).path();
    return QStorageInfo(existing).rootPath();
}

bool isInDocumentsPortal(const QString& path) {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return path.startsWith(u"/run/flatpak/doc/") ||
           (!runtime.isEmpty() && path.startsWith(QDir::cleanPath(runtime) + "/doc/"));
}

}  // namespace volume
