#include "convert/ConversionJob.h"

#include "convert/AfterConversion.h"
#include "convert/ConversionCommand.h"
#include "convert/ConversionSettings.h"
#include "convert/ReplacedFile.h"
#include "convert/RunJournal.h"
#include "convert/SpaceCheck.h"
#include "convert/StatusText.h"
#include "convert/SupportMail.h"
#include "settings/Keys.h"
#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/alerts/DontWarnAgain.h"
#include "support/base/Files.h"
#include "support/base/Format.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/base/Volume.h"
#include "support/desktop/Desktop.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"
#include "tool/Tool.h"
#include "tool/ToolProcess.h"
#include "tool/ToolReaper.h"

#include <QFile>
#include <QFileInfo>

namespace {

constexpr int kProgressIntervalMilliseconds = 1000;

double secondsBetween(const QDateTime& from, const QDateTime& to) {
    return static_cast<double>(from.msecsTo(to)) / 1000;
}

}  // namespace

ConversionJob::ConversionJob(JobController& controller, MKVFileInfo info, qsizetype audioTrackIndex,
                             QObject* parent)
    : QObject(parent),
      m_controller(controller),
      m_fileInfo(std::move(info)),
      m_queuedDestination(m_fileInfo.destinationURL.toLocalFile()),
      m_audioTrackIndex(audioTrackIndex) {
    m_timer.setInterval(kProgressIntervalMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &ConversionJob::progressTimer);
}

ConversionJob::~ConversionJob() {
    endRun();
    stopSecurityAccess();
}

std::optional<ConversionMethod> ConversionJob::method() const {
    const AudioEntry* audio = chosenAudio(m_fileInfo, m_audioTrackIndex);
    if (!audio) return std::nullopt;
    return calculateConversionMethod(audio->codec(), audio->isSurround(), ConversionSettings::current());
}

ConversionPlan ConversionJob::plan() const {
    return m_plan ? *m_plan : makePlan(m_fileInfo, m_audioTrackIndex, ConversionSettings::current());
}

void ConversionJob::presetSpeedInfo() {
    if (const auto chosen = method()) setSpeedInfoFromMethod(*chosen);
}

void ConversionJob::setState(JobState state) {
    const JobState before = std::exchange(m_state, state);
    const bool ends = state == JobState::Finished || state == JobState::Failed;
    // Also if the tool was never started.
    if (ends) releaseSleepAssertion();
    if (before == state) return;
    if (ends) {
        m_stopDate = QDateTime::currentDateTime();
        m_progress = 100;
    }
    Q_EMIT stateChanged(before, state);
}

void ConversionJob::acquireSleepAssertion() {
    releaseSleepAssertion();
    m_sleepAssertion = sharedDesktop().acquireSleepAssertion("Converting MKV file.");
}

void ConversionJob::releaseSleepAssertion() {
    sharedDesktop().releaseSleepAssertion(std::exchange(m_sleepAssertion, 0));
}

bool ConversionJob::destinationIsWriteable() const {
    const bool replaces = m_mayReplaceDestination && QFileInfo(m_queuedDestination).isFile();
    return files::isWriteablePath(replaces ? files::uniqueFile(m_queuedDestination) : m_queuedDestination);
}

void ConversionJob::start() {
    Q_EMIT starting();
    acquireSleepAssertion();
    m_output = ToolOutput();
    m_receipt.reset();
    m_progress = 0;
    if (!files::fileExists(m_fileInfo.fileURL)) {
        m_output.note(failure::kUserRemoved);
        m_finishedError = true;
        setState(JobState::Failed);
        const QString message =
            Texts::tr(
                "It seems you've removed the file %1 or unmounted its volume so conversion can't proceed.")
                .arg(m_fileInfo.fileURL.fileName());
        showInTurn([message] {
            alert_dontwarnagain_ever("warningremoved", Texts::tr("Error"), message, Texts::tr("OK"),
                                     Texts::tr("Don't warn again"));
        });
        Q_EMIT ended();
        return;
    }
    if (!checkFreeSpace()) {
        m_output.note(failure::kFreeSpace);
        setState(JobState::Failed);
        Q_EMIT ended();
        return;
    }
    prepareRun();
    setState(JobState::Converting);
    m_arguments = buildArguments();
    launch();
    m_controller.pauseContinueClicked(false);
}

void ConversionJob::claimDestination() {
    const QString destination = m_fileInfo.destinationURL.toLocalFile();
    if (m_mayReplaceDestination) {
        m_replaced = std::make_unique<ReplacedFile>(destination);
    } else {
        const QString claimed = files::claimUniqueFile(destination, [&](const QString& candidate) {
            return candidate != destination && m_destinationIsTaken && m_destinationIsTaken(candidate);
        });
        m_fileInfo.destinationURL = QUrl::fromLocalFile(claimed);
    }
    m_wroteDestination = true;
}

void ConversionJob::prepareRun() {
    claimDestination();
    const QString name = files::fittingFileName(m_fileInfo.fileName, ".log");
    m_progressFile =
        std::make_unique<ProgressFile>(files::claimUniqueFile(QuillonLib::shared().docDir() + u'/' + name));
    const QString output = m_fileInfo.destinationURL.toLocalFile();
    m_journal = std::make_unique<RunJournal>(output, m_progressFile->path(),
                                             m_replaced ? m_replaced->asidePath() : QString());
    if (m_replaced) {
        m_replaced->moveAside();
        files::claimUniqueFile(output);
    }
    m_journal->noteOutput();
}

QStringList ConversionJob::buildArguments() {
    const ConversionSettings settings = ConversionSettings::current();
    m_plan = makePlan(m_fileInfo, m_audioTrackIndex, settings);
    ConversionRequest request{m_fileInfo, m_audioTrackIndex, false, m_progressFile->path()};
    if (const AudioEntry* audio = chosenAudio(m_fileInfo, m_audioTrackIndex)) {
        const ConversionMethod method =
            calculateConversionMethod(audio->codec(), audio->isSurround(), settings);
        setSpeedInfoFromMethod(method);
        request.needsFixup =
            method == ConversionMethod::Copy && audio->codec() == u"aac" && needFixup(audio->stream());
        if (m_fileInfo.subtitleFileURL)
            logInformation("Info: adding subtitles from file %@", m_fileInfo.subtitleFileURL->toLocalFile());
    }
    return conversionArguments(request, settings);
}

bool ConversionJob::needFixup(int audioStream) const {
    const bool asks = trialRunAsksForFixup(tool::trialRun(trialRunArguments(m_fileInfo, audioStream)));
    // The output of the trial run must not be mistaken for the movie if the conversion writes nothing.
    QFile::resize(m_fileInfo.destinationURL.toLocalFile(), 0);
    return asks;
}

void ConversionJob::launch() {
    m_task = std::make_unique<ToolProcess>();
    connect(m_task.get(), &ToolProcess::outputReceived, this, &ConversionJob::outputReceived);
    connect(m_task.get(), &ToolProcess::ended, this, &ConversionJob::taskFinished);
    m_startDate = QDateTime::currentDateTime();
    m_timer.start();
    m_task->start(m_arguments);
    if (m_state == JobState::Converting) Q_EMIT launched();
}

void ConversionJob::outputReceived(const QByteArray& bytes) {
    m_output.append(bytes);
}

void ConversionJob::progressTimer() {
    readProgress();
    m_journal->noteStillRunning();
    Q_EMIT progressed();
}

void ConversionJob::readProgress() {
    const auto seconds = m_progressFile->readNew();
    if (!seconds || *seconds <= 0) return;
    m_progress = progress::percent(*seconds, m_fileInfo.runtimeSeconds).value_or(m_progress);
}

QString ConversionJob::stateInfoString() const {
    StatusFacts facts;
    facts.state = m_state;
    facts.progress = m_progress;
    facts.elapsedSeconds = secondsBetween(m_startDate, QDateTime::currentDateTime());
    facts.conversionSeconds = secondsBetween(m_startDate, m_stopDate);
    facts.audioTracks = m_fileInfo.audioTrackInformation;
    facts.audioTrackIndex = m_audioTrackIndex;
    return ::stateInfoString(facts);
}

void ConversionJob::taskFinished(const ToolExit& exit) {
    m_timer.stop();
    readProgress();
    const double convertedSeconds = m_progressFile->furthestSeconds();
    std::exchange(m_progressFile, nullptr)->remove();
    m_output.finish();
    m_task.release()->deleteLater();  // Still emitting: delete later.

    auto reason = failure::whyNotFinished(m_output.text(), convertedSeconds, m_fileInfo.runtimeSeconds);
    if (files::fileSize(m_fileInfo.destinationURL) == 0) reason = failure::kOutputIncomplete;
    if (exit.succeeded() && reason) m_output.note(*reason);
    const bool hasFailed = !exit.succeeded() || reason;
    if (hasFailed) {
        failed(exit);
    } else {
        succeeded();
    }
    m_controller.startNextJobInQueue();
    afterconversion::notifyUser(m_fileInfo, hasFailed);
    afterconversion::countRun();
    m_controller.increaseUsages(true, true);
    if (defaultInt(kQuitAfterConversionKey) != 0 &&
        m_controller.jobCountWithState(JobState::Converting) == 0 &&
        m_controller.jobCountWithState(JobState::Failed) == 0) {
        Q_EMIT quitRequested();
    }
}

void ConversionJob::failed(const ToolExit& exit) {
    if (exit.reason == ToolExit::Reason::NotStarted)
        m_output.note(failure::kToolMissing + u' ' + exit.startError);
    const QString line = makeString("CJ %p failedJobOutout: %@ status: %i reason: %li", this, m_output.text(),
                                    exit.status, exit.reason == ToolExit::Reason::Exited ? 1L : 2L);
    qn_log_message(kLogNotice, line);
    m_finishedError = true;
    deleteOutput();
    const bool noSpace = failure::saysNoSpaceLeft(m_output.text());
    if (!noSpace) m_output.note(line);
    m_journal.reset();
    setState(JobState::Failed);
    if (noSpace) {
        showInTurn([told = failure::noSpaceLeft()] { alert(told.title, told.message, Texts::tr("OK")); },
                   "no space left");
    }
    Q_EMIT ended();
}

/// An incomplete movie is useless, and it occupies space if the disk is full.
void ConversionJob::deleteOutput() {
    if (std::exchange(m_wroteDestination, false)) QFile::remove(m_fileInfo.destinationURL.toLocalFile());
    if (m_replaced) m_replaced->restore();
}

void ConversionJob::succeeded() {
    m_finishedOK = true;
    if (m_replaced) m_replaced->discard();
    m_journal.reset();
    setState(JobState::Finished);
    Q_EMIT ended();
    if (defaultInt(kAutoCleanKey) != 0) remove();
    if (defaultInt(kAutoRemoveKey) != 0) afterconversion::disposeOfSource(m_fileInfo);
}

void ConversionJob::pause() {
    if (m_state != JobState::Converting) return;
    m_timer.stop();
    if (m_task) m_task->suspend();
    setState(JobState::Paused);
    releaseSleepAssertion();
}

void ConversionJob::continueJob() {
    if (m_state == JobState::Queued) {
        start();
    } else if (m_state == JobState::Paused) {
        m_timer.start();
        if (m_task) m_task->resume();
        setState(JobState::Converting);
        acquireSleepAssertion();
    }
    m_controller.pauseContinueClicked(false);
}

void ConversionJob::remove() {
    endRun();
    stopSecurityAccess();
    m_controller.removeJob(this);
    m_controller.startNextJobInQueue();
}

void ConversionJob::stopSecurityAccess() {
    if (m_fileInfo.securityURL) folderaccess::stopAccessing(m_fileInfo.securityURL->toLocalFile());
    m_fileInfo.securityURL.reset();
}

void ConversionJob::endRun() {
    m_timer.stop();
    releaseSleepAssertion();
    if (m_task) m_task->disconnect(this);
    // Keep a finished output, and a file that this job has not replaced yet.
    const bool deletesOutput = m_wroteDestination && m_state != JobState::Finished;
    const QString output = deletesOutput ? m_fileInfo.destinationURL.toLocalFile() : QString();
    const auto cleanUp = [output, progressFile = std::shared_ptr<ProgressFile>(std::move(m_progressFile)),
                          replaced = std::shared_ptr<ReplacedFile>(std::move(m_replaced)),
                          journal = std::shared_ptr<RunJournal>(std::move(m_journal))] {
        if (!output.isEmpty()) QFile::remove(output);
        if (replaced) replaced->restore();
        if (progressFile) progressFile->remove();
    };
    m_wroteDestination = false;
    ToolReaper::shared().adopt(std::move(m_task), cleanUp);
}

void ConversionJob::reveal(bool shiftIsHeld) {
    if (m_state != JobState::Failed) {
        const QUrl& shown = shiftIsHeld ? m_fileInfo.fileURL : m_fileInfo.destinationURL;
        sharedDesktop().reveal(shown.toLocalFile());
        return;
    }
    const failure::Explanation told = explanation();
    if (!told.offersSupport) {
        alert(told.title, told.message, Texts::tr("OK"));
    } else if (alert(told.title, told.message, Texts::tr("Send to support"), Texts::tr("Cancel")) ==
               kAlertFirstButton) {
        mail::open(conversionSupportMail(m_arguments, m_output.text(), m_fileInfo));
    }
}

failure::Explanation ConversionJob::explanation() const {
    return failure::explain(
        {m_output.text(), m_arguments,
         defaultInt(kDisableBuiltinSubtitlesKey) == 0 && !m_fileInfo.subtitleTrackIDs.isEmpty(),
         m_fileInfo.subtitleFileURL.has_value()});
}

bool ConversionJob::checkFreeSpace() const {
    const QString folder = QFileInfo(m_fileInfo.destinationURL.toLocalFile()).path();
    const auto verdict =
        spacecheck::check(m_fileInfo.fileSize, volume::freeBytes(folder), volume::maximumFileSize(folder));
    if (verdict == spacecheck::Verdict::Enough) return true;
    const QString message = spacecheck::message(verdict);
    showInTurn([message] { alert_apptitled(message, Texts::tr("OK")); }, message);
    return false;
}
