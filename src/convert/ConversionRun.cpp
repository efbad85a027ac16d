#include "convert/ConversionRun.h"

#include "convert/ClaimedFile.h"
#include "convert/Progress.h"
#include "convert/RunJournal.h"
#include "convert/proof/ProofRecord.h"
#include "settings/Settings.h"
#include "support/base/FileSteps.h"
#include "support/base/Files.h"
#include "support/base/Format.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/base/Volume.h"
#include "support/processes/Dispatch.h"
#include "support/reports/QuillonLib.h"
#include "tool/Tool.h"
#include "tool/ToolProcess.h"
#include "tool/ToolReaper.h"

#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QUrl>

#include <thread>

namespace {

constexpr int kProgressIntervalMilliseconds = 1000;

double now(const QElapsedTimer& clock) {
    return static_cast<double>(clock.elapsed()) / 1000;
}

/// The replaced file may be the only whole copy if the new one is not whole.
bool deletesReplaced(const RunEnding& ending) {
    return !ending.receipt || ending.isWhole();
}

}  // namespace

ConversionRun::ConversionRun(RunRequest request, QObject* parent)
    : QObject(parent), m_request(std::move(request)), m_output(m_request.destination) {
    m_clock.start();
    m_timer.setInterval(kProgressIntervalMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &ConversionRun::progressTimer);
}

ConversionRun::~ConversionRun() {
    abort();
}

spacecheck::Verdict ConversionRun::checkFreeSpace() const {
    const QString folder = QFileInfo(m_request.destination).path();
    return spacecheck::check(m_request.sourceBytes, volume::freeBytes(folder),
                             volume::maximumFileSize(folder));
}

bool ConversionRun::prepare() {
    RunEnding refusal;
    if (!files::fileExists(m_request.source)) {
        refusal.kind = RunEnding::Kind::SourceGone;
    } else if (refusal.space = checkFreeSpace(); refusal.space != spacecheck::Verdict::Enough) {
        refusal.kind = RunEnding::Kind::VolumeTooSmall;
    } else {
        refusal = claimFiles();
        if (refusal.succeeded()) return true;
        m_said.note(refusal.trouble);
    }
    m_said.note(runending::marker(refusal.kind));
    m_ending = std::move(refusal);
    return false;
}

RunEnding ConversionRun::claimFiles() {
    RunJournal::Wish wish{m_request.destination, m_request.mayReplaceDestination, {}, {}, false};
    wish.isTaken = [this](const QString& candidate) {
        return candidate != m_request.destination && m_request.destinationIsTaken &&
               m_request.destinationIsTaken(candidate);
    };
    wish.takesNoOtherName = m_request.takesNoOtherName;
    wish.progressFile = QuillonLib::shared().docDir() + u'/' + files::fittingFileName(m_request.name, ".log");
    auto journal = std::make_unique<RunJournal>();
    const RunJournal::Trouble trouble = journal->claim(wish);
    if (trouble == RunJournal::Trouble::NameTaken) return RunEnding::of(RunEnding::Kind::NameTaken);
    if (trouble != RunJournal::Trouble::None) {
        const bool isPrivate = trouble == RunJournal::Trouble::PrivateData;
        RunEnding refusal = isPrivate ? RunEnding::of(RunEnding::Kind::PrivateDataUnwritable)
                                      : runending::unwritten(journal->error());
        refusal.trouble =
            makeString("%@: %@", isPrivate ? QuillonLib::shared().suppDir() : m_request.destination,
                       qt_error_string(journal->error()));
        return refusal;
    }
    m_output = journal->output();
    m_source = FileStamp::of(m_request.source);
    if (m_source) claimedfile::noteSource(m_output, *m_source);
    m_progressFile = std::make_unique<ProgressFile>(journal->progressFile());
    m_journal = std::move(journal);
    m_hasOutput = true;
    return {};
}

Room ConversionRun::room() const {
    // Sound that becomes larger than its source, and the index.
    constexpr quint64 kBytesPerSecond = 1 << 20;
    constexpr quint64 kUnknownDuration = 24 * 3600;
    const auto seconds = m_request.runtimeSeconds
                             ? static_cast<quint64>(std::max(*m_request.runtimeSeconds, 1))
                             : kUnknownDuration;
    Room room{{m_request.source}, {m_output, m_progressFile->path()}};
    if (!m_request.subtitleFile.isEmpty()) room.readable.append(m_request.subtitleFile);
    room.maximumFileBytes = 2 * m_request.sourceBytes + (seconds + 1024) * kBytesPerSecond;
    return room;
}

QString ConversionRun::trialOutput() const {
    const QStringList arguments =
        m_request.trialArguments ? m_request.trialArguments(m_output) : QStringList();
    if (arguments.isEmpty()) return {};
    QString said = tool::trialRun(arguments, room());
    // The output of the trial run must not be mistaken for the movie if the conversion writes nothing.
    filesteps::makeEmpty(m_output);
    return said;
}

void ConversionRun::launch() {
    m_trialOutput = trialOutput();
    m_proof = m_request.makeProof ? m_request.makeProof() : nullptr;
    if (m_proof) {
        connect(m_proof.get(), &RunProof::finished, this, [this](const RunEnding& proven) {
            whenResumed([this, proven] {
                if (!applyRemedy(proven)) end(proven);
            });
        });
    }
    startTool(m_request.arguments);
    if (!m_ending) Q_EMIT launched();
}

void ConversionRun::startTool(const ArgumentsBuilder& arguments) {
    m_arguments = arguments({m_output, m_progressFile->path(), m_trialOutput});
    m_task = std::make_unique<ToolProcess>();
    connect(m_task.get(), &ToolProcess::outputReceived, this,
            [this](const QByteArray& bytes) { m_said.append(bytes); });
    connect(m_task.get(), &ToolProcess::ended, this, &ConversionRun::taskFinished);
    m_timer.start();
    m_stallWatch.restart(now(m_clock));
    m_task->start(m_arguments, room());
    if (m_proof && m_task) m_proof->toolStarted(m_task->processId());
}

void ConversionRun::progressTimer() {
    readProgress();
    m_journal->noteStillRunning();
    watchActivity();
    if (!m_ending) Q_EMIT progressed();
}

void ConversionRun::watchActivity() {
    if (!m_task) return;
    StallWatch::Activity activity = activityOfProcess(m_task->processId());
    activity.outputBytes = QFileInfo(m_output).size();
    activity.seconds = m_progressFile->furthestSeconds();
    m_idleSeconds = m_stallWatch.idleSeconds(activity, now(m_clock));
    const auto limit = static_cast<double>(settings::StallLimit.value());
    if (limit > 0 && m_idleSeconds >= limit) giveUp();
}

void ConversionRun::giveUp() {
    m_timer.stop();
    m_proof.reset();
    m_said.finish();
    RunEnding ending = RunEnding::of(RunEnding::Kind::Stalled);
    note(ending);
    leaveToReaper();
    m_ending = std::move(ending);
    Q_EMIT ended();
}

void ConversionRun::readProgress() {
    const auto seconds = m_progressFile->readNew();
    if (!seconds || *seconds <= 0) return;
    m_percent = progress::percent(*seconds, m_request.runtimeSeconds).value_or(m_percent);
}

void ConversionRun::taskFinished(const ToolExit& exit) {
    m_timer.stop();
    m_idleSeconds = 0;
    readProgress();
    m_said.finish();
    m_task.release()->deleteLater();  // Still emitting: delete later.
    const RunEnding ending = runending::decide(
        {exit, m_said.text(), files::fileSize(QUrl::fromLocalFile(m_output)),
         m_progressFile->furthestSeconds(), m_request.runtimeSeconds, m_request.keepsDamaged});
    if (applyRemedy(ending)) return;
    if (ending.isProvable() && m_proof) {
        prove(ending);
    } else {
        end(ending);
    }
}

bool ConversionRun::applyRemedy(const RunEnding& ending) {
    if (!m_request.remedy) return false;
    const auto remedy = m_request.remedy(ending, m_said.text());
    if (!remedy || m_remedies.contains(remedy->name)) return false;
    // Keep the claimed file: a new one could be another program's.
    if (filesteps::makeEmpty(m_output) != 0) return false;
    logInformation("Info: converting %@ again with the remedy %@", m_request.source, remedy->name);
    if (!ending.succeeded() && !m_firstFailure) m_firstFailure = Failure{ending, m_said.text()};
    m_remedies.append(remedy->name);
    m_notes += remedy->notes;
    whenResumed([this, arguments = remedy->arguments] {
        m_said = ToolOutput();
        m_percent = 0;
        QFile::resize(m_progressFile->path(), 0);
        m_progressFile = std::make_unique<ProgressFile>(m_progressFile->path());
        startTool(arguments);
    });
    return true;
}

void ConversionRun::prove(const RunEnding& ending) {
    m_percent = 100;
    m_timer.start();
    Q_EMIT progressed();
    if (!m_proof) return;  // Aborted by a receiver.
    m_proof->start(ending, m_output, m_said.text());
}

void ConversionRun::whenResumed(std::function<void()> step) {
    if (m_isPaused) {
        m_postponed = std::move(step);
    } else {
        step();
    }
}

void ConversionRun::end(RunEnding ending) {
    if (!ending.succeeded() && m_firstFailure) {
        ending = m_firstFailure->ending;
        m_said = ToolOutput();
        m_said.note(m_firstFailure->said);
    }
    if (m_proof) m_proof.release()->deleteLater();  // Still emitting: delete later.
    const bool isOlderDeleted = (m_journal->hasReplaced() && deletesReplaced(ending)) ||
                                (m_request.deletesSource && m_request.deletesSource());
    if (ending.succeeded() && isOlderDeleted) {
        syncOutput(ending);
    } else {
        complete(ending, false);
    }
}

/// In a thread of its own, as it takes as long as the disk.
void ConversionRun::syncOutput(const RunEnding& ending) {
    std::thread([run = QPointer(this), output = m_output, ending] {
        const int error = filesteps::sync(output);
        dispatch_async_main([run, ending, error] {
            if (run) run->outputSynced(ending, error);
        });
    }).detach();
}

void ConversionRun::outputSynced(RunEnding ending, int error) {
    if (m_ending) return;  // Aborted.
    if (error != 0) {
        ending.kind = runending::unwritten(error).kind;
        ending.trouble = makeString("%@: %@", m_output, qt_error_string(error));
        m_said.note(ending.trouble);
    }
    whenResumed([this, ending] { complete(ending, true); });
}

void ConversionRun::complete(RunEnding ending, bool isSynced) {
    m_timer.stop();
    if (ending.succeeded()) {
        using enum RunJournal::Fate;
        const bool isSameSource = m_source && FileStamp::of(m_request.source) == m_source;
        if (ending.isWhole() && isSameSource) proofrecord::write(m_output, *m_source, *ending.receipt);
        const auto [kept, isDurable] =
            m_journal->finish(deletesReplaced(ending) ? Deleted : KeptBeside, isSynced);
        ending.isDurable = isDurable;
        if (!kept.isEmpty())
            m_notes.append(Texts::tr("The file that was there before is kept as %1.").arg(kept));
        if (ending.receipt) ending.receipt->notes += m_notes;
    } else {
        note(ending);
        // An incomplete movie is useless, and it occupies space if the disk is full.
        m_journal->discard();
    }
    m_hasOutput = false;
    m_progressFile.reset();
    m_journal.reset();
    m_ending = std::move(ending);
    Q_EMIT ended();
}

void ConversionRun::note(const RunEnding& ending) {
    using enum RunEnding::Kind;
    QString marker = runending::marker(ending.kind);
    if (ending.kind == ToolMissing) marker += u' ' + ending.exit.startError;
    m_said.note(marker);
    const ToolExit& exit = ending.exit;
    const QString line = makeString("CJ %p failedJobOutout: %@ status: %i reason: %li", this, m_said.text(),
                                    exit.status, exit.reason == ToolExit::Reason::Exited ? 1L : 2L);
    qn_log_message(kLogNotice, line);
    if (ending.kind != NoSpace) m_said.note(line);
}

void ConversionRun::pause() {
    m_isPaused = true;
    m_timer.stop();
    m_idleSeconds = 0;
    if (m_task) m_task->suspend();
}

void ConversionRun::resume() {
    m_isPaused = false;
    m_timer.start();
    m_stallWatch.restart(now(m_clock));
    if (m_task) m_task->resume();
    if (const auto step = std::exchange(m_postponed, nullptr)) step();
}

void ConversionRun::abort() {
    m_timer.stop();
    m_postponed = nullptr;
    m_proof.reset();
    if (!m_hasOutput) return;
    leaveToReaper();
    m_ending = RunEnding::of(RunEnding::Kind::Interrupted);
}

void ConversionRun::leaveToReaper() {
    if (m_task) m_task->disconnect(this);
    m_hasOutput = false;
    const auto cleanUp = [journal = std::shared_ptr<RunJournal>(std::move(m_journal))] {
        journal->discard();
    };
    ToolReaper::shared().adopt(std::move(m_task), cleanUp);
}
