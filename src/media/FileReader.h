#pragma once

#include <QString>

#include <array>
#include <cstddef>
#include <functional>
#include <span>
#include <stop_token>

namespace media {

using Bytes = std::span<const unsigned char>;

/// The number in up to eight bytes, the most significant first.
inline quint64 bigEndian(Bytes bytes) {
    quint64 value = 0;
    for (const unsigned char byte : bytes)
        value = value << 8U | byte;
    return value;
}

/// A regular file for reads at positions: one that shrinks meanwhile ends earlier, which a mapping would
/// answer with a signal. Once the reading is cancelled or a read failed nothing can be read any more, so that
/// every loop that needs bytes ends.
class File {
public:
    using Gate = std::function<bool(quint64)>;

    /// `gate`: see Options::mayReadUpTo.
    explicit File(const QString& path, std::stop_token stop = {}, Gate gate = {});
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return m_file >= 0; }
    /// In bytes, when it was opened.
    quint64 size() const { return m_size; }
    bool isCancelled() { return m_cancelled = m_cancelled || m_stop.stop_requested(); }
    bool hasFailed() const { return m_failed; }

    /// Fills `into`; returns how many bytes there were.
    std::size_t read(quint64 position, std::span<unsigned char> into);

private:
    bool mayRead(quint64 end);

    int m_file = -1;
    quint64 m_size = 0;
    std::stop_token m_stop;
    Gate m_gate;
    quint64 m_granted = 0;
    bool m_cancelled = false;
    bool m_failed = false;
};

/// A window into a file that moves with what is asked for: it reads ahead while that is adjacent, and little
/// while it is scattered.
class FileReader {
public:
    static constexpr std::size_t kMost = 8192;

    explicit FileReader(File& file) : m_file(file) {}

    /// `length` bytes at `position`, at most kMost; fewer only at the end of the file. Valid until the next
    /// call.
    Bytes at(quint64 position, std::size_t length) {
        const quint64 offset = position - m_position;  // Huge for what is in front of the window.
        if (offset > m_length || length > m_length - offset) return refilled(position, length);
        return Bytes(m_bytes).subspan(offset, length);
    }
    /// The whole window from `position` on, at least one byte of it unless the file ends.
    Bytes from(quint64 position) {
        if (position < m_position || position >= m_position + m_length) refilled(position, 1);
        if (position >= m_position + m_length) return {};
        return Bytes(m_bytes).first(m_length).subspan(position - m_position);
    }
    /// The big-endian number there; 0 behind the end of the file.
    quint64 number(quint64 position, std::size_t length) {
        const Bytes bytes = at(position, length);
        return bytes.size() == length ? bigEndian(bytes) : 0;
    }
    /// About how many bytes are wanted where the window moves to next, unless that is adjacent.
    void expect(quint64 length) { m_expected = length; }
    quint64 size() const { return m_file.size(); }
    File& file() { return m_file; }

private:
    /// By default the frames of sound up to the next picture.
    static constexpr quint64 kExpected = 2048;

    Bytes refilled(quint64 position, std::size_t length);

    File& m_file;
    quint64 m_position = 0;
    std::size_t m_length = 0;
    quint64 m_expected = kExpected;
    std::size_t m_ahead = 0;
    std::array<unsigned char, kMost> m_bytes = {};
};

/// Whether there are only zeros from `position` up to `end`.
bool isZero(FileReader& bytes, quint64 position, quint64 end);

}  // namespace media
