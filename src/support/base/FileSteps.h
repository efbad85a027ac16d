#pragma once

#include <QByteArray>
#include <QString>

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
/// A file that does not exist is no failure.
int remove(const QString& path);

/// Whether something has the name; a broken link, too.
bool isTaken(const QString& path);

}  // namespace filesteps
