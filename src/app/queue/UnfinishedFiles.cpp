#include "app/queue/UnfinishedFiles.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace unfinished {

namespace {

QString listPath() {
    return ApplicationInfo::homeInsideSandbox() + "/Unfinished files";
}

/// The parent of the path; empty for a path with one component.
QString above(const QString& path) {
    return path.first(qMax<qsizetype>(0, path.lastIndexOf(u'/')));
}

}  // namespace

void keep(const QStringList& paths) {
    if (paths.isEmpty()) return;
    QByteArray list;
    for (const QString& path : paths)
        list += path.toUtf8() + '\0';
    QDir().mkpath(ApplicationInfo::homeInsideSandbox());
    QFile file(listPath());
    if (!file.open(QIODevice::Append) || file.write(list) != list.size() || !file.flush())
        logError("Error: the list of unfinished files could not be written: %@", file.errorString());
}

QStringList kept() {
    QStringList paths = QString::fromUtf8(files::contents(listPath()).value_or(QByteArray())).split(u'\0');
    paths.removeLast();  // The part after the last terminator: empty, or half a path if the file was
                         // truncated.
    return paths;
}

void forget() {
    QFile::remove(listPath());
}

QStringList movedAlong(const QStringList& paths, QString before, QString now) {
    while (before != now && !before.isEmpty() && !now.isEmpty() &&
           QFileInfo(before).fileName() == QFileInfo(now).fileName()) {
        before = above(before);
        now = above(now);
    }
    QStringList result;
    for (const QString& path : paths) {
        const QString moved = files::withFolderMoved(path, before, now);
        result.append(!files::fileExists(path) && files::fileExists(moved) ? moved : path);
    }
    return result;
}

}  // namespace unfinished
