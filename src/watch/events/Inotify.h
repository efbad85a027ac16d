#pragma once

#include <QDeadlineTimer>
#include <QString>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// One instance of inotify(7).
class Inotify {
public:
    struct Event {
        int watch = 0;
        uint32_t mask = 0;
        uint32_t cookie = 0;
        std::string_view name;  ///< Bytes, for the time of the call; empty: the watched folder itself.
    };

    Inotify();
    ~Inotify();
    Inotify(const Inotify&) = delete;
    Inotify& operator=(const Inotify&) = delete;

    int descriptor() const { return m_file; }
    /// Why there is no instance, for the user; empty: there is one.
    QString problem() const;

    /// The watch of the folder at `path`, which is the same one as long as the folder is, wherever it moves.
    /// Negative: an error number. ENOSPC: the limit of watches.
    int watch(const std::string& path, uint32_t mask);
    void remove(int watch);

    /// Hands over what waits until `handle` says no or time is over. True: nothing waits any more.
    bool read(const QDeadlineTimer& deadline, const std::function<bool(const Event&)>& handle);

    /// What to tell the user when watches run out under `folder`.
    static QString limitOfWatches(const QString& folder);

private:
    int m_file;
    int m_error;
};
