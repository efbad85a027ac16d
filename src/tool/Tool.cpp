#include "tool/Tool.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Texts.h"
#include "support/processes/ChildProcess.h"
#include "support/processes/ProcessRunner.h"

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

Report report(const QString& moviePath, const std::atomic<bool>* isCancelled) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    childprocess::prepare(process);
    process.start(path(), {"-i", moviePath}, QIODevice::ReadOnly);
    Report report;
    if (!process.waitForStarted(-1)) {
        report.startError = process.errorString();
        return report;
    }
    report.started = true;
    childprocess::waitForEnd(process, 0, isCancelled);
    report.output = process.readAll();
    return report;
}

QString trialRun(const QStringList& arguments) {
    return runAsTaskWithTerminationStatus(QStringList(path()) + arguments, nullptr, Polling::On,
                                          kTrialLimitMilliseconds)
        .value_or(QString());
}

}  // namespace tool
