#include "media/FileReader.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace media {

namespace {

constexpr quint64 kGateStep = quint64{4} << 20U;
constexpr quint64 kLeastAhead = 64;
constexpr quint64 kAdjacent = 1024;  // Up to here reading the bytes between costs less than another call.

}  // namespace

File::File(const QString& path, std::stop_token stop, Gate gate)
    : m_stop(std::move(stop)), m_gate(std::move(gate)) {
    m_file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (m_file < 0) return;
    struct stat status = {};
    if (::fstat(m_file, &status) == 0 && S_ISREG(status.st_mode)) {
        m_size = static_cast<quint64>(status.st_size);
        return;
    }
    ::close(m_file);
    m_file = -1;
}

File::~File() {
    if (m_file >= 0) ::close(m_file);
}

bool File::mayRead(quint64 end) {
    if (m_failed || m_file < 0 || isCancelled()) return false;
    if (m_gate && end > m_granted) {
        m_granted = std::min(m_size, (end / kGateStep + 1) * kGateStep);
        m_cancelled = !m_gate(m_granted);
    }
    return !m_cancelled;
}

std::size_t File::read(quint64 position, std::span<unsigned char> into) {
    if (position >= m_size) return 0;
    const std::size_t wanted = std::min<quint64>(into.size(), m_size - position);
    if (!mayRead(position + wanted)) return 0;
    std::size_t done = 0;
    while (done < wanted) {
        const ssize_t read =
            ::pread(m_file, into.data() + done, wanted - done, static_cast<off_t>(position + done));
        if (read < 0 && errno == EINTR) continue;
        m_failed = read < 0;
        if (read <= 0) break;
        done += static_cast<std::size_t>(read);
    }
    return done;
}

Bytes FileReader::refilled(quint64 position, std::size_t length) {
    length = std::min(length, kMost);
    const quint64 end = m_position + m_length;
    const bool adjacent = position >= m_position && position <= end + kAdjacent;
    m_ahead = std::clamp(adjacent ? quint64{m_ahead} * 2 : m_expected, kLeastAhead, quint64{kMost});
    m_position = position;
    m_length = m_file.read(position, std::span(m_bytes).first(std::max(m_ahead, length)));
    return Bytes(m_bytes).first(std::min(m_length, length));
}

bool isZero(FileReader& bytes, quint64 position, quint64 end) {
    while (position < end) {
        Bytes some = bytes.from(position);
        if (some.empty()) return false;
        some = some.first(std::min<quint64>(some.size(), end - position));
        if (std::ranges::any_of(some, [](unsigned char byte) { return byte != 0; })) return false;
        position += some.size();
    }
    return true;
}

}  // namespace media
