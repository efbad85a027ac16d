#pragma once

#include "support/base/FileStamp.h"

#include <QString>

#include <functional>
#include <optional>

/// Empty files that a run creates under names that were free, and how they are recognised after a crash: by
/// a mark, an extended attribute with the run's id, which stays when the file is truncated and written. Where
/// there are no attributes, by the time of birth or the inode. Any thread. Errors are errno values.
namespace claimedfile {

/// The extended attribute.
inline constexpr const char* kMark = "user.ravelin.run";
/// Beside it: which source is converted.
inline constexpr const char* kSource = "user.ravelin.source";

/// How a file without a mark is recognised; empty: by its mark.
using Identity = QString;

struct Claim {
    QString path;
    QString temporary;  ///< In the same folder; the file has this name until it is marked.
    QString id;         ///< Of the run.
};

/// Creates the file. EEXIST: the name is taken. `noteIdentity` is called for a file that cannot be marked,
/// before it gets its name; it returns false if the file is not to be claimed, which is ECANCELED.
int claim(const Claim& claim, const std::function<bool(const Identity&)>& noteIdentity);

/// Whether the file at `path` is the one that was claimed.
bool isOurs(const QString& path, const QString& id, const Identity& identity);

enum class Mark { Set, NotSet, NotKnown };
/// Whether the file has the mark of a run, of any instance on any machine. NotKnown where there are no
/// attributes.
Mark markOf(const QString& path);

/// Whether a run writes the file, or compares it: it has the mark and was changed within the last hour. What
/// a machine that crashed has left keeps its mark until that machine starts the application again.
bool isBeingWritten(const QString& path);

/// Adds which source the run of a marked file converts, for other instances. Does nothing where there are no
/// attributes.
void noteSource(const QString& path, const FileStamp& source);
/// Empty: not known.
std::optional<FileStamp> sourceOf(const QString& path);

/// Removes the mark: the file belongs to the user now.
void release(const QString& path);

}  // namespace claimedfile
