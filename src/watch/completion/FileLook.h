#pragma once

#include "watch/completion/WriterCheck.h"

#include <QString>

#include <chrono>
#include <functional>

/// A snapshot of a file's state. Opens the file for reading for a few microseconds; of a file that cannot be
/// opened, it has only what stat(2) returns.
struct FileLook {
    /// The functions that query the kernel; replaced in tests.
    struct Sources {
        std::function<writercheck::Writers(int file)> writers = writercheck::writersOf;
        std::function<writercheck::Sight(const QString& path)> sight = writercheck::sightOf;
    };

    /// Unclear: a temporary error, such as a lack of descriptors. The other members are valid for File only.
    enum class Found { File, NoFile, Unclear };

    /// The attributes that change when the file is written or replaced.
    struct Shape {
        quint64 device = 0;
        quint64 inode = 0;
        qint64 size = 0;
        std::chrono::nanoseconds modified{0};  ///< Since 1970, by the file server's clock.
        bool operator==(const Shape&) const = default;
    };

    Found found = Found::Unclear;
    Shape shape;
    std::chrono::nanoseconds changed{0};  ///< Like `modified`, but of contents, name or attributes.
    writercheck::Writers writers = writercheck::Writers::NotKnown;
    writercheck::Sight sight = writercheck::Sight::All;
    bool isSymbolicLink = false;
    bool hasOtherNames = false;
};

/// Follows symbolic links. Never opens FIFOs or devices: opening some has side effects. Callable from any
/// thread.
FileLook lookAt(const QString& path, const FileLook::Sources& sources);
