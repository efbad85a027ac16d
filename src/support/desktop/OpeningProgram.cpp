#include "support/desktop/OpeningProgram.h"

#include <QEventLoop>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

#include <unistd.h>

namespace openingprogram {

namespace {

constexpr int kPatienceMilliseconds = 2000;

/// Returns false if xdg-open is missing.
bool prepare(QProcess& process, const QUrl& url) {
    const QString opener = QStandardPaths::findExecutable("xdg-open");
    process.setProgram(opener);
    process.setArguments({url.toString(QUrl::FullyEncoded)});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return !opener.isEmpty();
}

}  // namespace

bool start(const QUrl& url) {
    QProcess process;
    return prepare(process, url) && process.startDetached();
}

std::optional<bool> startAndWait(const QUrl& url) {
    // Deleted only after its process has exited: deleting a running QProcess would kill it, and the mail
    // program that it became. So its owner is never destroyed.
    static auto* const owner = new QObject;
    auto* process = new QProcess(owner);
    if (!prepare(*process, url)) {
        delete process;
        return std::nullopt;
    }
    process->setChildProcessModifier([] { ::setsid(); });  // Survives closing the terminal.
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    QEventLoop loop;
    std::optional<bool> isOpened = true;
    QObject::connect(process, &QProcess::finished, &loop, [&](int status, QProcess::ExitStatus how) {
        isOpened = how == QProcess::NormalExit && status == 0;
        loop.quit();
    });
    QObject::connect(process, &QProcess::errorOccurred, &loop, [&](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return;
        isOpened = std::nullopt;
        process->deleteLater();
        loop.quit();
    });
    QTimer::singleShot(kPatienceMilliseconds, &loop, &QEventLoop::quit);
    process->start();
    // A failed start may have been reported already.
    if (process->state() != QProcess::NotRunning) loop.exec(QEventLoop::ExcludeUserInputEvents);
    return isOpened;
}

}  // namespace openingprogram
