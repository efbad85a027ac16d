#include "app/intake/DroppedFiles.h"

#include "app/intake/MovieFiles.h"
#include "support/base/Texts.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>

namespace droppedfiles {

namespace {

/// Limit of the search, which blocks the drag.
constexpr int kMaximumMilliseconds = 20;

QString fileName(const QString& path) {
    return QFileInfo(path).fileName();
}

/// The names of movies below it that are not accepted are appended to `leftOut`.
bool mayHoldMovie(const QString& folder, const QElapsedTimer& timer, QStringList& leftOut) {
    QDirIterator entries(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        if (timer.hasExpired(kMaximumMilliseconds) || (moviefiles::isMovie(path) && !QFileInfo(path).isDir()))
            return true;
        if (!moviefiles::refusedType(path).isEmpty()) leftOut.append(fileName(path));
    }
    return false;
}

}  // namespace

QStringList paths(const QList<QUrl>& urls) {
    QStringList result;
    for (const QUrl& url : urls) {
        if (url.isLocalFile()) result.append(url.toLocalFile());
    }
    return result;
}

bool isAccepted(const QStringList& paths) {
    if (std::ranges::any_of(paths, moviefiles::isMovie)) return true;
    QElapsedTimer timer;
    timer.start();
    QStringList leftOut;
    return std::ranges::any_of(paths, [&](const QString& path) {
        return QFileInfo(path).isDir() && mayHoldMovie(path, timer, leftOut);
    });
}

QString refusal(const QList<QUrl>& urls) {
    const QStringList dropped = paths(urls);
    if (dropped.isEmpty()) return Texts::tr("Only files of this computer can be dropped here.");
    if (std::ranges::all_of(dropped, moviefiles::isSubtitle))
        return Texts::tr("A subtitle file needs its movie: drop both together.");
    QElapsedTimer timer;
    timer.start();
    QStringList leftOut;
    for (const QString& path : dropped) {
        if (QFileInfo(path).isDir()) {
            mayHoldMovie(path, timer, leftOut);
        } else if (!moviefiles::refusedType(path).isEmpty()) {
            leftOut.append(fileName(path));
        }
    }
    if (!leftOut.isEmpty()) return moviefiles::whyLeftOut(leftOut);
    const QString name = fileName(dropped.first());
    if (dropped.size() > 1) return Texts::tr("None of these files is a movie.");
    return QFileInfo(dropped.first()).isDir() ? Texts::tr("There is no movie in the folder “%1”.").arg(name)
                                              : Texts::tr("“%1” is not a movie.").arg(name);
}

}  // namespace droppedfiles
