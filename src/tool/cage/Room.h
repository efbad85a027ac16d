#pragma once

#include <QStringList>

/// What one start of the tool may reach besides the system's libraries. A value; any thread.
struct Room {
    QStringList readable = {};  ///< Files and folders, full paths.
    QStringList writable = {};  ///< Existing files, full paths; they may be read, too.
    /// Each written file; a lower limit of the application's own stays.
    quint64 maximumFileBytes = 0;
};
