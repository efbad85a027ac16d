#pragma once

#include <cstdint>
#include <ctime>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Reads the entries of one folder one by one. Holds a descriptor while it lives. Each instance is for one
/// thread.
class FolderReader {
public:
    enum class Kind { File, Folder, Other };  ///< A symbolic link counts as a file: it may refer to one.
    struct Entry {
        std::string_view name;  ///< Valid until the next entry is read.
        Kind kind;
    };
    enum class Arrival { Before, New, MovedHere };

    /// `mayBeLink`: whether to follow a symbolic link at the end of `path`.
    explicit FolderReader(const std::string& path, bool mayBeLink);

    /// The next entry except "." and ".."; null at the end or if the folder cannot be read.
    std::optional<Entry> next();

    /// Whether entries were added or removed at `time` (of CLOCK_REALTIME) or later.
    bool changedSince(const timespec& time) const;
    /// How an entry arrived, judged by its times. A folder that arrived after `time` with its contents is
    /// MovedHere.
    Arrival arrival(const Entry& entry, const timespec& time) const;

private:
    struct Closer {
        void operator()(DIR* folder) const { ::closedir(folder); }
    };

    Kind kind(const dirent& entry) const;

    std::unique_ptr<DIR, Closer> m_folder;
};
