#include "convert/proof/ReadPosition.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace readposition {

std::optional<quint64> ofProcess(qint64 processId, const QString& path) {
    if (processId <= 0) return std::nullopt;
    const QString wanted = QFileInfo(path).canonicalFilePath();
    const QString process = QStringLiteral("/proc/%1/").arg(processId);
    const QFileInfoList descriptors = QDir(process + "fd").entryInfoList(QDir::System | QDir::Files);
    for (const QFileInfo& descriptor : descriptors) {
        if (descriptor.symLinkTarget() != wanted) continue;
        QFile facts(process + "fdinfo/" + descriptor.fileName());
        if (!facts.open(QIODevice::ReadOnly)) continue;
        // The first line: "pos:" and the offset.
        return facts.readLine().mid(4).trimmed().toULongLong();
    }
    return std::nullopt;
}

}  // namespace readposition
