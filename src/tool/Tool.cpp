#include "tool/Tool.h"

#include "settings/Settings.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Texts.h"
#include "support/processes/ChildProcess.h"
#include "support/processes/ProcessRunner.h"
#include "tool/cage/Cage.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

namespace {

constexpr int kTrialLimitMilliseconds = 60000;

}  // namespace

namespace tool {

QString path() {
    return ApplicationInfo::resourceFolder() + "/ffmpeg";
}

QString problem() {
    const QFileInfo file(path());
    if (!file.isFile()) {
        return Texts::tr("The conversion tool is missing, it should be at '%1'. Please install %2 again.")
            .arg(path(), ApplicationInfo::name());
    }
    if (!file.isExecutable()) {
        return Texts::
            tr("The conversion tool at '%1' can't be started because it is not executable. Please install %2 again.")
                .arg(path(), ApplicationInfo::name());
    }
    return {};
}

QString prepare(QProcess& process, const QStringList& arguments, const Room& room) {
    process.setProgram(path());
    process.setArguments(arguments);
    childprocess::prepare(process);
    const CageMode mode = settings::CageTool.value();
    cage::enclose(process, room, mode);
    return cage::refusal(mode);
}

Report report(const QString& moviePath, const std::atomic<bool>* isCancelled) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    Report report;
    report.startError = prepare(process, {"-i", moviePath}, {.readable = {moviePath}});
    if (!report.startError.isEmpty()) return report;
    process.start(QIODevice::ReadOnly);
    if (!process.waitForStarted(-1)) {
        report.startError = process.errorString();
        return report;
    }
    report.started = true;
    constexpr int kMillisecondsPerMinute = 60000;
    QElapsedTimer timer;
    timer.start();
    constexpr int kLimit = kReportLimitMinutes * kMillisecondsPerMinute;
    report.isLate = !childprocess::waitForEnd(process, kLimit, isCancelled) && timer.hasExpired(kLimit);
    report.output = process.readAll();
    return report;
}

QString trialRun(const QStringList& arguments, const Room& room) {
    const CageMode mode = settings::CageTool.value();
    if (!cage::refusal(mode).isEmpty()) return {};
    const auto enclose = [&](QProcess& process) { cage::enclose(process, room, mode); };
    return runAsTaskWithTerminationStatus(QStringList(path()) + arguments, nullptr, Polling::On,
                                          kTrialLimitMilliseconds, enclose)
        .value_or(QString());
}

}  // namespace tool
