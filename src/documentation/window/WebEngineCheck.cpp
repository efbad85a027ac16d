#include "documentation/window/WebEngineCheck.h"

#include "support/base/Format.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace webengine {

namespace {

/// The paths where the engine looks for a component: only the environment variable's, if it is set.
QStringList placesOf(const char* variable, QLibraryInfo::LibraryPath path, const QString& below) {
    if (qEnvironmentVariableIsSet(variable)) return {qEnvironmentVariable(variable)};
    return {QLibraryInfo::path(path) + below, QCoreApplication::applicationDirPath()};
}

QString missingPart() {
    const QString program = "QtWebEngineProcess";
    const bool isNamed = qEnvironmentVariableIsSet("QTWEBENGINEPROCESS_PATH");
    bool isThere = false;
    for (const QString& place : placesOf("QTWEBENGINEPROCESS_PATH", QLibraryInfo::LibraryExecutablesPath, {}))
        isThere = isThere || QFileInfo(isNamed ? place : place + u'/' + program).isExecutable();
    if (!isThere) return program;
    for (const char* name : {"qtwebengine_resources.pak", "qtwebengine_resources_100p.pak"}) {
        isThere = false;
        for (const QString& place :
             placesOf("QTWEBENGINE_RESOURCES_PATH", QLibraryInfo::DataPath, "/resources"))
            isThere = isThere || QFileInfo(place + u'/' + name).isReadable();
        if (!isThere) return name;
    }
    return {};
}

bool sandboxIsSwitchedOff() {
    return qgetenv("QTWEBENGINE_DISABLE_SANDBOX") == "1" ||
           qgetenv("QTWEBENGINE_CHROMIUM_FLAGS").split(' ').contains("--no-sandbox");
}

/// Runs in the forked child: system calls only.
bool writes(const char* path, const char* text, size_t length) {
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    return file >= 0 && ::write(file, text, length) == static_cast<ssize_t>(length);
}

/// Whether an unprivileged process may create a sandbox, as the engine does for its pages. Systems and
/// containers forbid it in many ways, so the only test is to try.
bool sandboxCanBeBuilt() {
    const QByteArray users = QByteArray::number(::geteuid()) + ' ' + QByteArray::number(::geteuid()) + " 1";
    const QByteArray groups = QByteArray::number(::getegid()) + ' ' + QByteArray::number(::getegid()) + " 1";
    const char* userMap = users.constData();
    const char* groupMap = groups.constData();
    const auto userLength = static_cast<size_t>(users.size());
    const auto groupLength = static_cast<size_t>(groups.size());
    const pid_t child = ::fork();
    if (child < 0) return false;
    if (child == 0) {
        const bool isShut =
            ::unshare(CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET) == 0 &&
            writes("/proc/self/setgroups", "deny", 4) && writes("/proc/self/uid_map", userMap, userLength) &&
            writes("/proc/self/gid_map", groupMap, groupLength) && ::chroot("/proc/self/fdinfo") == 0;
        ::_exit(isShut ? 0 : 1);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool addressSpaceIsLimited() {
    rlimit limit{};
    return ::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
}

bool sharedMemoryHasPlace() {
    return ::access("/dev/shm", W_OK | X_OK) == 0 || QFileInfo(QDir::tempPath()).isWritable();
}

}  // namespace

QString obstacle() {
    if (const QString missing = missingPart(); !missing.isEmpty())
        return makeString("%@ of Qt WebEngine is not installed.", missing);
    if (addressSpaceIsLimited()) return "The address space of this process is limited.";
    if (!sharedMemoryHasPlace()) return "There is no place for shared memory.";
    if (sandboxIsSwitchedOff()) return {};
    if (::geteuid() == 0) return "Qt WebEngine does not run as root.";
    if (!sandboxCanBeBuilt()) return "This system does not let Qt WebEngine build its sandbox.";
    return {};
}

}  // namespace webengine
