#pragma once

#include <QStringList>

/// The files that an instance could not convert before it ended, stored on disk until the next instance opens
/// them. They stay stored if the next instance cannot be started, even if the user starts it days later. Main
/// thread only.
namespace unfinished {

/// Appends `paths` to the stored list, which may still hold the files of an earlier instance. An error is
/// logged.
void keep(const QStringList& paths);
/// The stored paths, in the order in which they were stored.
QStringList kept();
void forget();

/// `paths` adapted to a move of the application folder from `before` to `now`. Often a volume or a parent
/// folder was moved and the movies with it: a path that no longer exists is replaced by the path at the same
/// place below the moved folder, if a file exists there.
QStringList movedAlong(const QStringList& paths, QString before, QString now);

}  // namespace unfinished
