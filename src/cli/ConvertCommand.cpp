#include "cli/ConvertCommand.h"

#include "app/actions/JobMessages.h"
#include "app/destinations/OutputName.h"
#include "app/intake/AudioPreselection.h"
#include "app/queue/Usages.h"
#include "cli/Commands.h"
#include "cli/ExitStatus.h"
#include "cli/Run.h"
#include "settings/Keys.h"
#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/FileSteps.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/base/Volume.h"
#include "support/processes/Dispatch.h"
#include "support/processes/Interruption.h"
#include "support/store/Defaults.h"
#include "tool/ToolReaper.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>

#include <thread>
#include <utility>

namespace {

bool isTakenByAnother(const ConversionJob& job) {
    const auto ending = job.ending();
    return ending && ending->kind == RunEnding::Kind::NameTaken;
}

/// Of names for one output, when other runs take them.
constexpr int kTries = 5;

/// Whether the name is, or was for a moment, that of another run's file.
bool mayHaveBeenTaken(const QString& destination) {
    return filesteps::isTaken(destination) || volume::isShared(QFileInfo(destination).path());
}

QString sourceOf(const ConversionJob& job) {
    return job.fileInfo().fileURL.toLocalFile();
}

}  // namespace

ConvertCommand::ConvertCommand(const ConvertOptions& options, ConsolePresenter& presenter)
    : m_options(options),
      m_presenter(presenter),
      m_report(options.json ? makeJsonReport() : makeTextReport(options.quiet)),
      m_intake(FileIntake::Messages::AtOnce),
      m_queue(m_intake) {
    presenter.beforeWriting = [this] { m_report->prepareForOutput(); };
    presenter.onMessage = [this](const ConsolePresenter::Message& message) { onMessage(message); };
    // Runs are counted as in the window, but there is no user to be asked for a rating.
    m_queue.setUsageCounter([this](bool increase, bool) { increaseUsages(m_usages, increase, false); });
    connect(&m_intake, &FileIntake::scanningEnded, this, [this](const QString& path) {
        setSubject(path);
        m_messages.clear();
        m_collects = true;
    });
    connect(&m_intake, &FileIntake::fileAccepted, this, &ConvertCommand::onFileAccepted);
    connect(&m_intake, &FileIntake::fileRejected, this, &ConvertCommand::onFileRejected);
    connect(&m_intake, &FileIntake::becameIdle, this, [this] {
        // The last file may have been refused while added jobs waited for it.
        m_queue.startNextJobInQueue();
        QTimer::singleShot(0, this, &ConvertCommand::addNextMovie);
        endIfDone();
    });
    // First, so that messages are reported before the end of the job.
    connect(&m_queue, &JobQueue::jobEnded, this,
            [](const ConversionJob* job) { jobmessages::showEnding(*job); });
    connect(&m_queue, &JobQueue::jobAdded, this, &ConvertCommand::watch);
    connect(&m_queue, &JobQueue::jobStateChanged, this, [this](const ConversionJob*, JobState before) {
        if (before == JobState::Queued) QTimer::singleShot(0, this, &ConvertCommand::addNextMovie);
    });
    connect(&ToolReaper::shared(), &ToolReaper::becameIdle, this, &ConvertCommand::endIfDone);
}

ConvertCommand::~ConvertCommand() {
    m_stop.request_stop();
    m_presenter.onMessage = nullptr;
    m_presenter.beforeWriting = nullptr;
}

void ConvertCommand::begin(const Inputs& inputs) {
    for (const Inputs::Refusal& refusal : inputs.refusals)
        refuse(refusal.file, refusal.reason, false);
    m_intake.openFiles(inputs.subtitles);
    m_pendingMovies = inputs.movies;
    addNextMovie();
    endIfDone();
}

void ConvertCommand::setEndless(bool endless) {
    m_endless = endless;
    endIfDone();
}

void ConvertCommand::add(const QString& path) {
    if (m_interrupted) return;
    m_pendingMovies.append(path);
    addNextMovie();
}

/// Adds one movie at a time, so that the first one is converted first and does not wait for the probes of the
/// others.
void ConvertCommand::addNextMovie() {
    if (m_interrupted || !takesOneMore()) return;
    const QString path = m_pendingMovies.takeFirst();
    // What the records say needs no probe.
    if (m_options.skipExisting && isLeft(path, existingoutput::look(path, placeFor(path)))) {
        QTimer::singleShot(0, this, &ConvertCommand::addNextMovie);
        endIfDone();
        return;
    }
    m_intake.openFiles({path});
    // The probe of a short movie takes as long as its conversion, and several are converted at once.
    if (!m_options.skipExisting && !m_pendingMovies.isEmpty()) m_intake.expect(m_pendingMovies.first());
}

bool ConvertCommand::takesOneMore() const {
    if (m_pendingMovies.isEmpty() || m_intake.isScanning() || m_intake.fileInfo()) return false;
    // The probe of one movie runs beside the conversion of another, in the rhythm of the conversions. Several
    // of these may end at once.
    return m_endless || m_queue.jobCountWithState(JobState::Queued) < JobQueue::conversionLimit();
}

void ConvertCommand::setSubject(const QString& file) {
    m_subject = file;
    m_presenter.subject = file;
}

void ConvertCommand::onMessage(const ConsolePresenter::Message& message) {
    if (m_collects) {
        m_messages.push_back(message);
    } else {
        m_report->message(m_subject, message);
    }
}

void ConvertCommand::reportProbe(const QString& file, const std::optional<MKVFileInfo>& record,
                                 std::optional<qsizetype> best) {
    m_collects = false;
    m_report->probed(file, record, best, m_messages);
    for (const auto& message : m_messages)
        m_report->message(file, message);
}

void ConvertCommand::onFileRejected(const QString& path) {
    // The signal may have ended the probe, and not yet arrived here.
    if (m_interrupted || Interruption::signal() != 0) {
        refuse(path, Texts::tr("The conversion was interrupted."), false);
        return;
    }
    reportProbe(path, std::nullopt, std::nullopt);
    const bool wasShown = !m_messages.empty();
    refuse(path, wasShown ? m_messages.back().message : Texts::tr("The file can't be converted."), wasShown);
}

void ConvertCommand::onFileAccepted() {
    const QString file = m_intake.fileInfo()->fileURL.toLocalFile();
    if (m_interrupted) {
        refuseAtHand(Texts::tr("The conversion was interrupted."), false);
        return;
    }
    const auto best = m_intake.bestLanguage();
    reportProbe(file, m_intake.fileInfo(), best);
    const auto audio = chooseAudio(file, best);
    if (!audio) return;
    convertAtHand(*audio, kTries);
}

/// Ends a movie that needs no conversion, or none by this process. False: it is to be converted.
bool ConvertCommand::isLeft(const QString& file, const existingoutput::Found& found) {
    using enum existingoutput::State;
    if (found.state == None) return false;
    if (found.state == Whole) {
        m_report->skipped(file, found.path, found.receipt);
    } else {
        refuse(file,
               Texts::tr("The movie is already being converted to '%1'. It was left alone.").arg(found.path),
               false);
    }
    return true;
}

/// Calls `found` later, but not after an interruption.
void ConvertCommand::findExisting(const MKVFileInfo& info, qsizetype audioTrackIndex,
                                  std::function<void(const existingoutput::Found&)> found) {
    const QString source = info.fileURL.toLocalFile();
    m_searched.append(source);
    const proof::Existing existing{source,
                                   info.subtitleFileURL ? info.subtitleFileURL->toLocalFile() : QString(),
                                   {},
                                   makePlan(info, audioTrackIndex, ConversionSettings::current()),
                                   info.runtimeSeconds};
    // Not joined: a read of a network disk that is gone can hang for minutes.
    std::thread([self = QPointer(this), existing, place = placeFor(source), stop = m_stop.get_token(),
                 found = std::move(found)] {
        const existingoutput::Found result = existingoutput::find(existing, place, stop);
        dispatch_async_main([self, existing, stop, found, result] {
            if (!self || stop.stop_requested()) return;
            self->m_searched.removeOne(existing.source);
            found(result);
            self->endIfDone();
        });
    }).detach();
}

/// The name is chosen before the look at what is there. So a run that takes it afterwards is noticed when the
/// name is claimed, and no further name hides that the movie is converted already.
void ConvertCommand::convertAtHand(qsizetype audioTrackIndex, int tries) {
    MKVFileInfo info = *m_intake.fileInfo();
    if (QString problem; !chooseDestination(info, problem)) {
        refuseAtHand(problem, false);
        return;
    }
    if (!m_options.skipExisting) {
        addToQueue(info, audioTrackIndex, tries);
        return;
    }
    findExisting(info, audioTrackIndex,
                 [this, info, audioTrackIndex, tries](const existingoutput::Found& found) {
                     if (isLeft(info.fileURL.toLocalFile(), found)) {
                         m_intake.cancelAdd();
                     } else {
                         addToQueue(info, audioTrackIndex, tries);
                     }
                 });
}

void ConvertCommand::addToQueue(const MKVFileInfo& info, qsizetype audioTrackIndex, int tries) {
    if (m_queue.addJob(makeJob(info, audioTrackIndex))) {
        endIfDone();
        return;
    }
    if (tries > 1 && mayHaveBeenTaken(info.destinationURL.toLocalFile())) {
        convertAtHand(audioTrackIndex, tries - 1);
        return;
    }
    const QString message = text::localized(JobQueue::kNotWriteable);
    alert_apptitled(message, Texts::tr("OK"));
    refuseAtHand(message, true);
    endIfDone();
}

/// Another run has got the name between the look at the outputs and the start.
void ConvertCommand::considerAgain(const ConversionJob& job) {
    MKVFileInfo next = job.fileInfo();
    QString problem;
    chooseDestination(next, problem);
    findExisting(next, job.audioTrackIndex(),
                 [this, next, track = job.audioTrackIndex()](const existingoutput::Found& found) {
                     if (isLeft(next.fileURL.toLocalFile(), found)) return;
                     m_queue.insertJob(makeJob(next, track), 0);
                     m_queue.startNextJobInQueue();
                 });
}

std::optional<qsizetype> ConvertCommand::chooseAudio(const QString& file, std::optional<qsizetype> best) {
    const qsizetype count = m_intake.fileInfo()->audioTrackInformation.size();
    if (!m_options.audio) return best.value_or(0);
    if (*m_options.audio < count) return *m_options.audio;
    refuseAtHand(noSuchAudioTrack(file, count, *m_options.audio), false);
    return std::nullopt;
}

existingoutput::Place ConvertCommand::placeFor(const QString& source) const {
    if (!m_options.output.isEmpty()) return {absolutePath(m_options.output), true};
    const QFileInfo movie(source);
    const QString folder = m_options.folder.isEmpty() ? movie.path() : absolutePath(m_options.folder);
    return {folder + u'/' + outputname::outputFileName(movie.fileName()), false};
}

bool ConvertCommand::chooseDestination(MKVFileInfo& info, QString& problem) const {
    const QString source = info.fileURL.toLocalFile();
    const existingoutput::Place place = placeFor(source);
    if (place.isOnly && outputname::isSameFile(place.destination, source)) {
        problem = outputname::kOverwritesSource;
        return false;
    }
    if (place.isOnly && QFileInfo(place.destination).isDir()) {
        problem = Texts::tr("The output '%1' is a folder.").arg(place.destination);
        return false;
    }
    info.destinationURL = FileUrl::fromLocalFile(place.isOnly ? place.destination
                                                              : m_queue.uniqueDestination(place.destination));
    return true;
}

std::unique_ptr<ConversionJob> ConvertCommand::makeJob(MKVFileInfo info, qsizetype audioTrackIndex) {
    auto job = std::make_unique<ConversionJob>(m_queue, std::move(info), audioTrackIndex);
    job->presetSpeedInfo();
    job->setMayReplaceDestination(!m_options.output.isEmpty());
    job->setTakesNoOtherName(m_options.skipExisting);
    job->overrides().keepDamaged = m_options.keepDamaged;
    return job;
}

void ConvertCommand::watch(ConversionJob* job) {
    ++m_running;
    // A movie that another run gets first was never queued.
    if (!m_options.skipExisting) m_report->queued(*job);
    connect(job, &ConversionJob::starting, this, [this, job] { setSubject(sourceOf(*job)); });
    connect(job, &ConversionJob::launched, this, [this, job] { m_report->started(*job); });
    connect(job, &ConversionJob::progressed, this, [this, job] { m_report->progress(*job); });
    connect(job, &ConversionJob::stateChanged, this, [this, job](JobState before) {
        setSubject(sourceOf(*job));
        if (m_options.skipExisting && before == JobState::Queued && !isTakenByAnother(*job))
            m_report->queued(*job);
    });
    connect(job, &ConversionJob::ended, this, [this, job] { onEnded(job); });
}

void ConvertCommand::onEnded(ConversionJob* job) {
    --m_running;
    if (m_options.skipExisting && isTakenByAnother(*job)) {
        considerAgain(*job);
    } else if (job->state() == JobState::Finished) {
        m_report->finished(*job);
        if (job->ending()->isKnownDamaged()) ++m_damaged;
    } else {
        ++m_failures;
        m_report->failed(*job, job->explanation());
    }
    // The job still has to remove its source and to count the run.
    QTimer::singleShot(0, this, &ConvertCommand::endIfDone);
    QTimer::singleShot(0, job, &ConversionJob::remove);
}

void ConvertCommand::refuse(const QString& file, const QString& message, bool wasShown) {
    ++m_failures;
    m_report->refused(file, message, wasShown);
}

void ConvertCommand::refuseAtHand(const QString& message, bool wasShown) {
    refuse(m_intake.fileInfo()->fileURL.toLocalFile(), message, wasShown);
    m_intake.cancelAdd();
}

void ConvertCommand::interrupt() {
    m_interrupted = true;
    m_stop.request_stop();
    const failure::Explanation why = failure::explain({RunEnding::of(RunEnding::Kind::Interrupted), {}, {}});
    for (qsizetype i = 0; i < m_queue.count(); ++i) {
        const ConversionJob* job = m_queue.job(i);
        if (!statusNotFinished(job->state())) continue;
        --m_running;
        if (m_options.skipExisting && job->state() == JobState::Queued) {
            refuse(sourceOf(*job), why.message, true);
            continue;
        }
        ++m_failures;
        m_report->failed(*job, why);
    }
    const QStringList waiting =
        std::exchange(m_searched, {}) + m_intake.importFiles() + std::exchange(m_pendingMovies, {});
    for (const QString& file : waiting)
        refuse(file, why.message, true);
    m_intake.clearImportFiles();
    m_queue.removeAll();
    if (m_intake.fileInfo()) m_intake.cancelAdd();
    endIfDone();
}

void ConvertCommand::endIfDone() {
    if (m_endless && !m_interrupted) return;
    const bool allProbed = m_searched.isEmpty() && m_pendingMovies.isEmpty() && !m_intake.areWaiting() &&
                           !m_intake.isScanning() && !m_intake.fileInfo();
    if (allProbed && m_running == 0 && ToolReaper::shared().isIdle()) QCoreApplication::quit();
}

namespace {

/// The error in the options for these inputs; empty: none.
QString errorIn(const ConvertOptions& options, const Inputs& inputs) {
    if (inputs.isEmpty()) return Inputs::noMovie();
    if (options.output.isEmpty()) return {};
    if (inputs.movies.size() > 1)
        return Texts::tr("--output is for a single movie, not for %1")
            .arg(QString::number(inputs.movies.size()));
    const bool isSource = inputs.movies.size() == 1 &&
                          outputname::isSameFile(absolutePath(options.output), inputs.movies.first());
    // Overwriting the source has a message of its own.
    if (isSource || outputname::hasOutputExtension(options.output)) return {};
    return Texts::tr("--output needs a name that ends in .mp4 or .m4v, not '%1'").arg(options.output);
}

}  // namespace

int runConvert(const ConvertOptions& options, const CommandLine& line) {
    const Inputs inputs = findInputs(options.paths, options.skipExisting ? Outputs::LeftOut : Outputs::Taken);
    const QString error = errorIn(options, inputs);
    if (!error.isEmpty()) return wrongUsage(error, "convert");

    const Interruption interruption;
    auto overrides = line.overrides;
    // A batch is converted in the given order.
    if (!overrides.contains("InsertJobsAtBottom")) overrides.insert("InsertJobsAtBottom", 1);
    Run run(overrides, Run::DesktopUse::Real);
    ConvertCommand command(options, run.presenter());
    QObject::connect(&interruption, &Interruption::interrupted, &command, &ConvertCommand::interrupt);
    QTimer::singleShot(0, &command, [&] { command.begin(inputs); });
    QCoreApplication::exec();
    if (const int signal = Interruption::signal()) return exitstatus::afterSignal(signal);
    if (command.failures() > 0) return exitstatus::kFailure;
    return command.damaged() > 0 ? exitstatus::kDamaged : exitstatus::kSuccess;
}
