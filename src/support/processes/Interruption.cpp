#include "support/processes/Interruption.h"

#include "support/processes/ChildProcess.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> theSignal = 0;
std::atomic<int> theWritingEnd = -1;

void onSignal(int signal) {
    const int error = errno;
    int none = 0;
    theSignal.compare_exchange_strong(none, signal);
    childprocess::interruptWaits();
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(theWritingEnd, &byte, 1);
    errno = error;
}

void setHandler(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

Interruption::Interruption(QObject* parent) : QObject(parent) {
    if (::pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    theWritingEnd = m_pipe[1];
    m_notifier = new QSocketNotifier(m_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        m_notifier->setEnabled(false);
        Q_EMIT interrupted(signal());
    });
    for (const int number : kSignals)
        setHandler(number, onSignal);
    setHandler(SIGPIPE, SIG_IGN);  // A closed pipe is reported as a failed write.
}

Interruption::~Interruption() {
    for (const int number : kSignals)
        setHandler(number, SIG_DFL);
    theWritingEnd = -1;
    for (const int end : m_pipe) {
        if (end >= 0) ::close(end);
    }
}

int Interruption::signal() {
    return theSignal;
}
