#pragma once

#include <cstdint>
#include <ctime>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// The entries of one folder, read one by one. Holds a descriptor as long as it lives.
class FolderReader {
public:
    enum class Kind { File, Folder, Other };  ///< A symbolic link counts as a file: it may stand for one.
    struct Entry {
        std::string_view name;  ///< Until the next entry.
        Kind kind;
    };
    enum class Arrival { Before, New, MovedHere };

    /// `mayBeLink`: a symbolic link at the end of `path` is followed.
    explicit FolderReader(const std::string& path, bool mayBeLink);

    /// Without "." and ".."; nothing: the end, or the folder cannot be read.
    std::optional<Entry> next();

    /// Whether names came or went at `time` (of CLOCK_REALTIME) or later.
    bool changedSince(const timespec& time) const;
    /// How an entry came here, as far as its times tell. A folder that came after `time` with its contents
    /// is MovedHere.
    Arrival arrival(const Entry& entry, const timespec& time) const;

private:
    struct Closer {
        void operator()(DIR* folder) const { ::closedir(folder); }
    };

    Kind kind(const dirent& entry) const;

    std::unique_ptr<DIR, Closer> m_folder;
};
