#include "app/Drop.h"

#include "app/MovieFiles.h"
#include "support/Format.h"
#include "support/Text.h"

#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace drop {

namespace {

/// Looks at so many entries at the most: some milliseconds.
constexpr int kMostEntries = 3000;

bool mayHoldMovie(const QString& folder, int& entriesLeft) {
    QDirIterator entries(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        if (moviefiles::isMovie(entries.next()) || --entriesLeft <= 0) return true;
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
    int entriesLeft = kMostEntries;
    return std::ranges::any_of(paths, [&](const QString& path) {
        return QFileInfo(path).isDir() && mayHoldMovie(path, entriesLeft);
    });
}

QString refusal(const QList<QUrl>& urls) {
    const QStringList dropped = paths(urls);
    if (dropped.isEmpty()) return text::localized("Only files of this computer can be dropped here.");
    if (std::ranges::all_of(dropped, moviefiles::isSubtitle))
        return text::localized("A subtitle file needs its movie: drop both together.");
    const QString name = QFileInfo(dropped.first()).fileName();
    if (dropped.size() > 1) return text::localized("None of these files is a movie.");
    return QFileInfo(dropped.first()).isDir() ? makeString("There is no movie in the folder “%@”.", name)
                                              : makeString("“%@” is not a movie.", name);
}

}  // namespace drop
