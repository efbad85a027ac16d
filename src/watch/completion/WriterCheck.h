#pragma once

#include <QString>

/// Asks the kernel whether a file is open for writing. Callable from any thread.
namespace writercheck {

enum class Writers { None, Some, NotKnown };

/// Whether any process on this machine has the file open for writing. `file` is a read-only descriptor.
/// NotKnown for another user's file (unless the process may lease any file) and on file systems without
/// leases. Meaningless on a network volume.
Writers writersOf(int file);

/// Which writers the kernel sees. All: every write passes through it. Local: the file system may be
/// implemented by a program or another machine, so it sees only some. None: its information about writers is
/// worthless.
enum class Sight { All, Local, None };

/// For the volume that contains `path`, which is absolute. All if the path does not exist.
Sight sightOf(const QString& path);
/// The same by the file system's magic number from statfs(2).
Sight sightOfType(long magic);

}  // namespace writercheck
