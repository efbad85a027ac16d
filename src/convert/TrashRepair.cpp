#include "convert/TrashRepair.h"

#include "support/base/FileSteps.h"
#include "support/base/Files.h"
#include "support/base/Volume.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <sys/stat.h>
#include <unistd.h>

namespace trashrepair {

namespace {

constexpr const char* kEnding = ".trashinfo";

struct Trash {
    QString folder;
    QString origin;  ///< The source as the trash's information names it.

    QString informationOf(const QString& fileName) const { return folder + "/info/" + fileName + kEnding; }
};

QList<Trash> trashesOf(const QString& source) {
    const QString mount = volume::mountPoint(QFileInfo(source).path());
    const QString user = QString::number(::getuid());
    const QString relative = QDir(mount).relativeFilePath(source);
    return {{QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Trash", source},
            {QDir(mount).filePath(".Trash/" + user), relative},
            {QDir(mount).filePath(".Trash-" + user), relative}};
}

QByteArray pathLine(const Trash& trash) {
    return "\nPath=" + QUrl::toPercentEncoding(trash.origin, "/") + '\n';
}

bool write(const QString& path, const Trash& trash) {
    QFile information(path);
    const QByteArray text = "[Trash Info]" + pathLine(trash) +
                            "DeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() +
                            '\n';
    return information.open(QIODevice::WriteOnly) && information.write(text) == text.size() &&
           information.flush();
}

bool settleInformation(const Trash& trash, const QString& source) {
    const QString name = QFileInfo(source).completeBaseName();
    const QFileInfoList found =
        QDir(trash.folder + "/info").entryInfoList({u'*' + QString(kEnding)}, QDir::Files | QDir::Hidden);
    bool isDone = true;
    for (const QFileInfo& information : found) {
        if (!information.fileName().startsWith(name)) continue;
        const QString path = information.filePath();
        const bool isMoved = filesteps::isTaken(trash.folder + "/files/" + information.completeBaseName());
        const bool isEmpty = information.size() == 0;
        if (isMoved && isEmpty && !write(path, trash)) isDone = false;
        if (isMoved || !(isEmpty || files::contents(path).value_or("").contains(pathLine(trash)))) continue;
        if (filesteps::remove(path) != 0) isDone = false;
    }
    return isDone;
}

/// Whether the two are names of one file, or of one symbolic link.
bool areLinked(const QString& path, const QString& other) {
    struct stat one = {};
    struct stat two = {};
    return ::lstat(QFile::encodeName(path).constData(), &one) == 0 &&
           ::lstat(QFile::encodeName(other).constData(), &two) == 0 && one.st_dev == two.st_dev &&
           one.st_ino == two.st_ino;
}

bool takeBack(const QString& moved, const QString& source) {
    if (!filesteps::isTaken(source)) return filesteps::renameToFree(moved, source) == 0;
    return !areLinked(moved, source) || filesteps::remove(moved) == 0;
}

/// What has no information yet.
bool takeBack(const Trash& trash, const QString& source, const FileStamp& stamp) {
    const QFileInfoList files = QDir(trash.folder + "/files").entryInfoList(QDir::Files | QDir::Hidden);
    bool isDone = true;
    for (const QFileInfo& file : files) {
        const bool isOurs = !filesteps::isTaken(trash.informationOf(file.fileName())) &&
                            FileStamp::of(file.filePath()) == stamp;
        if (isOurs && !takeBack(file.filePath(), source)) isDone = false;
    }
    return isDone;
}

}  // namespace

bool settle(const QString& source, const std::optional<FileStamp>& stamp) {
    bool isDone = true;
    for (const Trash& trash : trashesOf(source)) {
        if (!settleInformation(trash, source)) isDone = false;
        if (stamp && !takeBack(trash, source, *stamp)) isDone = false;
    }
    return isDone;
}

}  // namespace trashrepair
