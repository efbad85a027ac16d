#include "support/processes/ChildProcess.h"

#include "support/processes/CollectedOutput.h"

#include <QElapsedTimer>
#include <QProcessEnvironment>

#include <atomic>
#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace childprocess {

namespace {

constexpr int kStepMilliseconds = 50;

std::atomic<bool> theWaitsAreInterrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

}  // namespace

void prepare(QProcess& process) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "C.UTF-8");
    environment.remove("LANGUAGE");
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(QProcess::nullDevice());
    // Runs between fork and exec: system calls only.
    process.setChildProcessModifier([parent = ::getpid()] {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) ::_exit(1);  // The application died before prctl() took effect.
    });
}

void runInChild(QProcess& process, const std::function<void()>& step) {
    process.setChildProcessModifier([before = process.childProcessModifier(), step] {
        before();
        step();
    });
}

void signalGroup(const QProcess& process, int signal) {
    const auto id = static_cast<pid_t>(process.processId());
    // The child becomes the group's leader by itself; until then, only the child can be signalled.
    if (id > 0 && ::kill(-id, signal) != 0) ::kill(id, signal);
}

bool waitForEnd(QProcess& process, int limitMilliseconds, const std::atomic<bool>* isCancelled,
                CollectedOutput* output) {
    QElapsedTimer timer;
    timer.start();
    while (process.state() != QProcess::NotRunning) {
        if (process.waitForFinished(kStepMilliseconds)) break;
        if (output) output->collect();
        const bool late = limitMilliseconds > 0 && timer.hasExpired(limitMilliseconds);
        if (late || waitsAreInterrupted() || (isCancelled && *isCancelled)) {
            signalGroup(process, SIGKILL);
            process.waitForFinished(-1);
            return false;
        }
    }
    return true;
}

void interruptWaits() {
    theWaitsAreInterrupted = true;
}

bool waitsAreInterrupted() {
    return theWaitsAreInterrupted;
}

}  // namespace childprocess
