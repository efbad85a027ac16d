#pragma once

#include "watch/completion/WriterCheck.h"

#include <QString>

#include <chrono>
#include <functional>

/// One look at a file: what can be told of it at this moment. Opens it for reading for some microseconds at
/// the most; a file that cannot be opened for reading is told of as far as its folder tells.
struct FileLook {
    /// Who is asked. The tests ask others.
    struct Sources {
        std::function<writercheck::Writers(int file)> writers = writercheck::writersOf;
        std::function<writercheck::Sight(const QString& path)> sight = writercheck::sightOf;
    };

    /// Unclear: an error that may pass, such as a lack of descriptors. Only with File the rest is valid.
    enum class Found { File, NoFile, Unclear };

    /// What changes when the file is written or replaced.
    struct Shape {
        quint64 device = 0;
        quint64 inode = 0;
        qint64 size = 0;
        std::chrono::nanoseconds modified{0};  ///< Since 1970, by the clock of whoever holds the file.
        bool operator==(const Shape&) const = default;
    };

    Found found = Found::Unclear;
    Shape shape;
    std::chrono::nanoseconds changed{0};  ///< As `modified`, of contents, name or attributes.
    writercheck::Writers writers = writercheck::Writers::NotKnown;
    writercheck::Sight sight = writercheck::Sight::All;
    bool isSymbolicLink = false;
    bool hasOtherNames = false;
};

/// Symbolic links are followed. Neither FIFOs nor devices are opened: some do things when they are.
FileLook lookAt(const QString& path, const FileLook::Sources& sources);
