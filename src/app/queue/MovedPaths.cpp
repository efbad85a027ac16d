#include "app/queue/MovedPaths.h"

#include "support/base/Files.h"

#include <QFileInfo>

namespace {

/// The parent of the path; empty for a path with one component.
QString above(const QString& path) {
    return path.first(qMax<qsizetype>(0, path.lastIndexOf(u'/')));
}

}  // namespace

QString movedAlong(const QString& path, QString before, QString now) {
    if (path.isEmpty() || files::fileExists(path)) return path;
    while (before != now && !before.isEmpty() && !now.isEmpty() &&
           QFileInfo(before).fileName() == QFileInfo(now).fileName()) {
        before = above(before);
        now = above(now);
    }
    const QString moved = files::withFolderMoved(path, before, now);
    return files::fileExists(moved) ? moved : path;
}
