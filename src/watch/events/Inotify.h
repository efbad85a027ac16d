#pragma once

#include <QDeadlineTimer>
#include <QString>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// Wraps an instance of inotify(7). Each instance is for one thread.
class Inotify {
public:
    struct Event {
        int watch = 0;
        uint32_t mask = 0;
        uint32_t cookie = 0;
        std::string_view name;  ///< Bytes, valid during the call; empty: the watched folder itself.
    };

    Inotify();
    ~Inotify();
    Inotify(const Inotify&) = delete;
    Inotify& operator=(const Inotify&) = delete;

    int descriptor() const { return m_file; }
    /// Why the kernel's instance could not be created, for the user; empty on success.
    QString problem() const;

    /// Watches the folder at `path` and returns the watch, which stays the same for a folder even if it is
    /// moved. Negative: an error number. ENOSPC: the limit of watches is reached.
    int watch(const std::string& path, uint32_t mask);
    void remove(int watch);

    /// Passes pending events to `handle` until it returns false or the deadline has passed. Returns true if
    /// no events are pending.
    bool read(const QDeadlineTimer& deadline, const std::function<bool(const Event&)>& handle);

    /// The kernel's limit "max_user_watches" or "max_user_instances", as text; "?": unknown.
    static QString systemLimit(const char* name);
    /// The message for the user when the limit of watches is reached below `folder`.
    static QString limitOfWatches(const QString& folder);

private:
    int m_file;
    int m_error;
};
