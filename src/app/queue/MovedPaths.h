#pragma once

#include <QString>

/// `path` adapted to a move of the application folder from `before` to `now`. Often a volume or a parent
/// folder was moved and the movies with it: a path that no longer exists is replaced by the path at the same
/// place below the moved folder, if a file or folder exists there. Any thread.
QString movedAlong(const QString& path, QString before, QString now);
