#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Changes of files of which a process that is killed leaves the state before or the one after. Each returns
/// 0 or the errno of its failure. Any thread; those that sync block until the disk has it.
namespace filesteps {

/// Writes all bytes to the descriptor and syncs them.
int writeAndSync(int descriptor, const QByteArray& bytes);
/// Syncs the file's data and its entry in the folder. File systems that cannot sync are no failure.
int sync(const QString& path);
int syncFolder(const QString& folder);

/// Replaces a file at `to`.
int rename(const QString& from, const QString& to);
/// Fails with EEXIST if `to` exists.
int renameToFree(const QString& from, const QString& to);
/// The same for volumes to which other machines write, whose servers may rename over a file that this machine
/// has not seen yet: `to` is created first, which only one of them can. Killed in between it leaves an empty
/// file there.
int renameToCreated(const QString& from, const QString& to);
/// A file that does not exist is no failure.
int remove(const QString& path);

/// An extended attribute of the file, of at most 4 KiB; empty if it has none.
std::optional<QByteArray> attribute(const QString& path, const char* name);
/// ENOTSUP where there are none.
int setAttribute(const QString& path, const char* name, const QByteArray& value);

/// Truncates a file and closes it: ext4 writes a truncated file to the disk while it is closed the next time,
/// and whoever fills this one shall not wait for that.
int makeEmpty(const QString& path);

/// Whether something has the name; a broken link, too.
bool isTaken(const QString& path);

}  // namespace filesteps
