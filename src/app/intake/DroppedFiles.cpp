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

bool mayHoldMovie(const QString& folder, const QElapsedTimer& timer) {
    QDirIterator entries(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        if (timer.hasExpired(kMaximumMilliseconds) || (moviefiles::isMovie(path) && !QFileInfo(path).isDir()))
            return true;
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
    return std::ranges::any_of(
        paths, [&](const QString& path) { return QFileInfo(path).isDir() && mayHoldMovie(path, timer); });
}

QString refusal(const QList<QUrl>& urls) {
    const QStringList dropped = paths(urls);
    if (dropped.isEmpty()) return Texts::tr("Only files of this computer can be dropped here.");
    if (std::ranges::all_of(dropped, moviefiles::isSubtitle))
        return Texts::tr("A subtitle file needs its movie: drop both together.");
    const QString name = QFileInfo(dropped.first()).fileName();
    if (dropped.size() > 1) return Texts::tr("None of these files is a movie.");
    return QFileInfo(dropped.first()).isDir() ? Texts::tr("There is no movie in the folder “%1”.").arg(name)
                                              : Texts::tr("“%1” is not a movie.").arg(name);
}

}  // namespace droppedfiles
