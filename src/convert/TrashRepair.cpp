#include "convert/TrashRepair.h"

#include "support/base/FileSteps.h"
#include "support/base/Volume.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <unistd.h>

namespace trashrepair {

namespace {

constexpr const char* kEnding = ".trashinfo";

struct Trash {
    QString folder;
    QString origin;  ///< The source as the trash's information names it.
};

QList<Trash> trashesOf(const QString& source) {
    const QString mount = volume::mountPoint(QFileInfo(source).path());
    const QString user = QString::number(::getuid());
    const QString relative = QDir(mount).relativeFilePath(source);
    return {{QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Trash", source},
            {QDir(mount).filePath(".Trash/" + user), relative},
            {QDir(mount).filePath(".Trash-" + user), relative}};
}

bool write(const QString& path, const QString& origin) {
    QFile information(path);
    const QByteArray text = "[Trash Info]\nPath=" + QUrl::toPercentEncoding(origin, "/") + "\nDeletionDate=" +
                            QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() + '\n';
    return information.open(QIODevice::WriteOnly) && information.write(text) == text.size() &&
           information.flush();
}

bool complete(const Trash& trash, const QString& source) {
    const QString name = QFileInfo(source).completeBaseName();
    const QFileInfoList found =
        QDir(trash.folder + "/info").entryInfoList({u'*' + QString(kEnding)}, QDir::Files | QDir::Hidden);
    bool isDone = true;
    for (const QFileInfo& information : found) {
        if (information.size() != 0 || !information.fileName().startsWith(name)) continue;
        const QString moved = trash.folder + "/files/" + information.completeBaseName();
        const bool isRepaired = filesteps::isTaken(moved) ? write(information.filePath(), trash.origin)
                                                          : filesteps::remove(information.filePath()) == 0;
        if (!isRepaired) isDone = false;
    }
    return isDone;
}

}  // namespace

bool complete(const QString& source) {
    bool isDone = true;
    for (const Trash& trash : trashesOf(source)) {
        if (!complete(trash, source)) isDone = false;
    }
    return isDone;
}

}  // namespace trashrepair
