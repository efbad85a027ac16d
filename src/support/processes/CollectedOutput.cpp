#include "support/processes/CollectedOutput.h"

#include "support/processes/ChildProcess.h"

#include <QProcess>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

void closeEnd(int& end) {
    if (end >= 0) ::close(std::exchange(end, -1));
}

}  // namespace

CollectedOutput::CollectedOutput() {
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    ::fcntl(m_readEnd, F_SETFL, O_NONBLOCK);
    ::fcntl(m_writeEnd, F_SETPIPE_SZ, static_cast<int>(kCapacity));
    m_capacity = ::fcntl(m_writeEnd, F_GETPIPE_SZ);
}

CollectedOutput::~CollectedOutput() {
    closeEnd(m_readEnd);
    closeEnd(m_writeEnd);
}

void CollectedOutput::takeFrom(QProcess& process) {
    m_process = &process;
    process.setProcessChannelMode(m_writeEnd < 0 ? QProcess::MergedChannels : QProcess::ForwardedChannels);
    childprocess::runInChild(process, [end = m_writeEnd] {
        if (end < 0) return;
        ::dup2(end, STDOUT_FILENO);
        ::dup2(end, STDERR_FILENO);
    });
}

void CollectedOutput::noteStarted() {
    closeEnd(m_writeEnd);
}

void CollectedOutput::collect() {
    std::array<char, 16384> piece;
    qsizetype collected = 0;
    while (m_readEnd >= 0 && collected < kCapacity) {
        const ssize_t length = ::read(m_readEnd, piece.data(), piece.size());
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return;
        collected += length;
        if (m_bytes.size() < kMost) m_bytes.append(piece.data(), length);
    }
}

QByteArray CollectedOutput::take() {
    collect();
    if (m_readEnd < 0 && m_process) return m_process->readAll();
    return std::exchange(m_bytes, {});
}
