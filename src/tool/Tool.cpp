#include "tool/Tool.h"

#include "settings/Settings.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Texts.h"
#include "support/processes/ChildProcess.h"
#include "support/processes/CollectedOutput.h"
#include "support/processes/ProcessRunner.h"
#include "tool/cage/Cage.h"
#include "tool/cage/Programs.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

#include <csignal>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int kTrialLimitMilliseconds = 60000;

/// System calls only.
void giveWay() {
    constexpr int kLeastNice = 19;
    ::setpriority(PRIO_PROCESS, 0, kLeastNice);
    // The C library has neither the call nor its constants.
    constexpr int kOfProcess = 1;
    constexpr int kIdleClass = 3;
    constexpr int kClassShift = 13;
    ::syscall(SYS_ioprio_set, kOfProcess, 0, kIdleClass << kClassShift);
    const rlimit time = {tool::kBackgroundSeconds, tool::kBackgroundSeconds + 1};
    ::setrlimit(RLIMIT_CPU, &time);
}

/// By default the C library returns the memory of each large packet to the kernel, and the next one costs its
/// page faults again: a fifteenth of a short movie's conversion, a sixth of a probe.
void keepMemory(QProcess& process) {
    QProcessEnvironment environment = process.processEnvironment();
    const QString name = QStringLiteral("GLIBC_TUNABLES");
    if (environment.contains(name)) return;  // The user tunes it.
    environment.insert(name, QStringList{"glibc.malloc.hugetlb=1", "glibc.malloc.mmap_threshold=8388608",
                                         "glibc.malloc.trim_threshold=67108864"}
                                 .join(u':'));
    process.setProcessEnvironment(environment);
}

/// What is wrong with the file; empty: nothing that shows.
QString flawText(programs::Flaw flaw) {
    switch (flaw) {
        case programs::Flaw::None:
            break;
        case programs::Flaw::NoProgram:
            return Texts::tr(
                "The conversion tool at '%1' can't be started because it is not a program. Please install %2 again.");
        case programs::Flaw::OtherProcessor:
            return Texts::tr(
                "The conversion tool at '%1' can't be started because it was made for another kind of processor. Please install %2 again.");
        case programs::Flaw::CutOff:
            return Texts::tr(
                "The conversion tool at '%1' can't be started because its file is cut off. Please install %2 again.");
    }
    return {};
}

/// Why an ended run says nothing about its file; empty: it may.
QString troubleOf(const QProcess& process, const QByteArray& output) {
    constexpr int kNotLoaded = 127;  // The status of the dynamic loader.
    if (output.isEmpty())
        return Texts::tr(
                   "The conversion tool at '%1' does not work: it printed nothing. Please install %2 again.")
            .arg(tool::path(), ApplicationInfo::name());
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != kNotLoaded) return {};
    return Texts::tr("The conversion tool at '%1' does not work (%2). Please install %3 again.")
        .arg(tool::path(), QString::fromUtf8(output.trimmed().split('\n').first()), ApplicationInfo::name());
}

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
    const QString flaw = flawText(programs::flaw(file.filePath()));
    return flaw.isEmpty() ? flaw : flaw.arg(path(), ApplicationInfo::name());
}

QString version() {
    constexpr int kLimitMilliseconds = 10000;
    QProcess process;
    if (!prepare(process, {"-version"}, {}).isEmpty()) return {};
    process.start(QIODevice::ReadOnly);
    if (!process.waitForStarted(-1) || !childprocess::waitForEnd(process, kLimitMilliseconds)) return {};
    static const QRegularExpression line("^ffmpeg version (\\S+)");
    return line.match(QString::fromUtf8(process.readAllStandardOutput())).captured(1);
}

bool isOurs(const QString& version) {
    return version.contains(QLatin1StringView("+ravelin"));
}

QString prepare(QProcess& process, const QStringList& arguments, const Room& room, Effort effort,
                CollectedOutput* output) {
    if (const QString reason = problem(); !reason.isEmpty()) return reason;
    process.setProgram(path());
    process.setArguments(arguments);
    childprocess::prepare(process);
    keepMemory(process);
    if (output) output->takeFrom(process);
    // The cage comes last, as it replaces the child by the tool.
    if (effort == Effort::Background) childprocess::runInChild(process, giveWay);
    const CageMode mode = settings::CageTool.value();
    cage::enclose(process, room, mode);
    return cage::refusal(mode);
}

Report report(const QString& moviePath, const std::atomic<bool>* isCancelled) {
    QProcess process;
    CollectedOutput output;
    Report report;
    report.startError =
        prepare(process, {"-i", moviePath}, {.readable = {moviePath}}, Effort::Usual, &output);
    if (!report.startError.isEmpty()) return report;
    process.start(QIODevice::ReadOnly);
    if (!process.waitForStarted(-1)) {
        report.startError = process.errorString();
        return report;
    }
    output.noteStarted();
    report.started = true;
    constexpr int kMillisecondsPerMinute = 60000;
    QElapsedTimer timer;
    timer.start();
    constexpr int kLimit = kReportLimitMinutes * kMillisecondsPerMinute;
    report.isLate =
        !childprocess::waitForEnd(process, kLimit, isCancelled, &output) && timer.hasExpired(kLimit);
    report.output = output.take();
    const bool isEndedByUs =
        report.isLate || (isCancelled && *isCancelled) || childprocess::waitsAreInterrupted();
    if (!isEndedByUs) report.trouble = troubleOf(process, report.output);
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

QByteArray pipedOutput(const QStringList& arguments, const Room& room, qsizetype byteCount,
                       int limitMilliseconds, const std::atomic<bool>& isCancelled) {
    constexpr int kStepMilliseconds = 50;
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!prepare(process, arguments, room, Effort::Background).isEmpty()) return {};
    QElapsedTimer timer;
    timer.start();
    process.start(QIODevice::ReadOnly);
    if (!process.waitForStarted(-1)) return {};
    while (process.state() != QProcess::NotRunning) {
        // A tool that has closed its output may go on.
        if (!process.waitForReadyRead(kStepMilliseconds)) process.waitForFinished(1);
        if (process.bytesAvailable() > byteCount || timer.hasExpired(limitMilliseconds) || isCancelled ||
            childprocess::waitsAreInterrupted()) {
            childprocess::signalGroup(process, SIGKILL);
            process.waitForFinished(-1);
            return {};
        }
    }
    QByteArray output = process.readAllStandardOutput();
    return output.size() == byteCount ? output : QByteArray();
}

}  // namespace tool
