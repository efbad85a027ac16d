#pragma once

#include <QString>

/// What the kernel knows of those who write a file.
namespace writercheck {

enum class Writers { None, Some, NotKnown };

/// Whether anybody on this machine has the file open for writing. `file` is a descriptor for reading only.
/// Not known for another user's file (unless the process may lease any file) and where the file system has no
/// leases. Meaningless on a network volume.
Writers writersOf(int file);

/// Whose writers the kernel sees. All: every write comes through it. Local: it may be a program's or another
/// machine's file system, so it sees only some. None: what it says of writers says nothing.
enum class Sight { All, Local, None };

/// Of the volume that holds `path`. A path that is not there counts as seen.
Sight sightOf(const QString& path);
/// The same from the file system's magic number, as statfs(2) tells it.
Sight sightOfType(long magic);

}  // namespace writercheck
