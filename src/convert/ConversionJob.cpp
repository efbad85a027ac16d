#include "convert/ConversionJob.h"

#include "convert/AfterConversion.h"
#include "convert/ConversionSettings.h"
#include "convert/MovieProof.h"
#include "convert/RemedyTable.h"
#include "convert/RunJournal.h"
#include "convert/StatusText.h"
#include "convert/plan/ConversionCommand.h"
#include "settings/Settings.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/store/FolderAccess.h"

#include <QFileInfo>

#include <algorithm>

namespace {

double secondsBetween(const QDateTime& from, const QDateTime& to) {
    return static_cast<double>(from.msecsTo(to)) / 1000;
}

std::optional<ConversionMethod> methodFor(const MKVFileInfo& info, qsizetype audioTrackIndex,
                                          const ConversionSettings& settings) {
    const AudioEntry* audio = chosenAudio(info, audioTrackIndex);
    if (!audio) return std::nullopt;
    return calculateConversionMethod(audio->codec(), audio->isSurround(), settings);
}

/// One text takes half of the memory of a list.
QString joined(const QStringList& arguments) {
    return arguments.join(QChar::Null);
}

bool carriesSubtitleFile(const ConversionPlan& plan) {
    return std::any_of(plan.tracks.cbegin(), plan.tracks.cend(),
                       [](const PlannedTrack& track) { return !track.stream && track.output; });
}

}  // namespace

ConversionJob::ConversionJob(JobController& controller, MKVFileInfo info, qsizetype audioTrackIndex,
                             QObject* parent)
    : QObject(parent),
      m_controller(controller),
      m_fileInfo(std::move(info)),
      m_audioTrackIndex(audioTrackIndex) {
    m_destination = m_fileInfo.destinationURL.toLocalFile();
    m_fileInfo.contents.dropStatistics();
}

ConversionJob::~ConversionJob() {
    endRun();
}

RunRequest& ConversionJob::request() {
    if (m_request) return *m_request;
    m_request = std::make_unique<RunRequest>();
    m_request->destinationIsTaken = [this](const QString& path) {
        return m_controller.isDestinationTaken(path);
    };
    m_request->remedy = [this](const RunEnding& ending, const QString& said) {
        return nextRemedy(ending, said);
    };
    m_request->deletesSource = [] { return settings::AutoRemove.value(); };
    m_request->makeProof = [this] {
        return settings::ProveResults.value() ? proofOf(m_start->plan) : nullptr;
    };
    return *m_request;
}

double ConversionJob::stalledSeconds() const {
    const double idle = m_run && m_state == JobState::Converting ? m_run->idleSeconds() : 0;
    return idle >= static_cast<double>(settings::StallNotice.value()) ? idle : 0;
}

double ConversionJob::progress() const {
    if (!statusNotFinished(m_state)) return 100;
    return m_run ? m_run->percent() : 0;
}

bool ConversionJob::finishedError() const {
    if (m_state != JobState::Failed) return false;
    const auto end = ending();
    return !end || end->kind != RunEnding::Kind::VolumeTooSmall;
}

QStringList ConversionJob::arguments() const {
    if (!m_past) return m_run ? m_run->arguments() : QStringList();
    return m_past->arguments.isEmpty() ? QStringList() : m_past->arguments.split(QChar::Null);
}

QString ConversionJob::jobOutput() const {
    if (m_past) return m_past->output;
    return m_run ? m_run->said() : QString();
}

void ConversionJob::restoreFailure(PastFailure failure) {
    m_past = std::make_unique<Past>(Past{joined(failure.arguments), std::move(failure.output), std::nullopt,
                                         std::move(failure.explanation)});
    m_state = JobState::Failed;
}

void ConversionJob::completeFileInfo(MKVFileInfo info, qsizetype audioTrackIndex) {
    info.destinationURL = m_fileInfo.destinationURL;
    info.subtitleFileURL = m_fileInfo.subtitleFileURL;
    info.securityURL = m_fileInfo.securityURL;
    m_fileInfo = std::move(info);
    m_fileInfo.contents.dropStatistics();
    m_audioTrackIndex = audioTrackIndex;
    m_isUnprobed = false;
    presetSpeedInfo();
}

std::optional<ConversionMethod> ConversionJob::method() const {
    return methodFor(m_fileInfo, m_audioTrackIndex, ConversionSettings::current());
}

void ConversionJob::presetSpeedInfo() {
    if (const auto chosen = method()) m_fastmode = *chosen == ConversionMethod::Copy;
}

void ConversionJob::setState(JobState state) {
    const JobState before = std::exchange(m_state, state);
    if (!statusNotFinished(state)) {
        holdSleepAssertion(false);
        m_stopDate = QDateTime::currentDateTime();
    }
    if (before == state) return;
    if (m_listener) m_listener->onStateChanged(*this, before, state);
    Q_EMIT stateChanged(before, state);
}

void ConversionJob::holdSleepAssertion(bool hold) {
    sharedDesktop().releaseSleepAssertion(std::exchange(m_sleepAssertion, 0));
    if (hold) m_sleepAssertion = sharedDesktop().acquireSleepAssertion("Converting MKV file.");
}

bool ConversionJob::destinationIsWriteable() const {
    const bool replaces = m_mayReplaceDestination && QFileInfo(m_destination).isFile();
    return RunJournal::canWrite(replaces ? files::uniqueFile(m_destination) : m_destination);
}

void ConversionJob::start() {
    Q_EMIT starting();
    holdSleepAssertion(true);
    m_past.reset();
    completeRequest();
    m_run = std::make_unique<ConversionRun>(request());
    if (!m_run->prepare()) {
        noteEnd(*std::exchange(m_run, nullptr));
        return;
    }
    m_fileInfo.destinationURL = FileUrl::fromLocalFile(m_run->output());
    setState(JobState::Converting);
    presetSpeedInfo();
    connect(m_run.get(), &ConversionRun::launched, this, &ConversionJob::launched);
    connect(m_run.get(), &ConversionRun::progressed, this, &ConversionJob::noteProgress);
    connect(m_run.get(), &ConversionRun::ended, this, &ConversionJob::taskFinished);
    m_startDate = QDateTime::currentDateTime();
    m_run->launch();
    m_controller.pauseContinueClicked(false);
}

void ConversionJob::completeRequest() {
    RunRequest& request = this->request();
    request.destination = m_destination;
    request.mayReplaceDestination = m_mayReplaceDestination;
    request.takesNoOtherName = m_takesNoOtherName;
    request.name = m_fileInfo.fileName;
    request.source = m_fileInfo.fileURL.toLocalFile();
    request.sourceBytes = m_fileInfo.fileSize;
    request.runtimeSeconds = m_fileInfo.runtimeSeconds;

    request.keepsDamaged = m_overrides.keepDamaged;

    auto [info, settings] = effective();
    request.trialArguments = nullptr;
    const AudioEntry* audio = chosenAudio(info, m_audioTrackIndex);
    const bool copiesAac = audio && audio->codec() == u"aac" &&
                           methodFor(info, m_audioTrackIndex, settings) == ConversionMethod::Copy;
    if (copiesAac) {
        request.trialArguments = [info = info, stream = audio->stream()](const QString& output) mutable {
            info.destinationURL = FileUrl::fromLocalFile(output);
            return trialRunArguments(info, stream);
        };
    }
    m_start = std::make_unique<Start>(Start{{}, makePlan(info, m_audioTrackIndex, settings)});
    request.subtitleFile = carriesSubtitleFile(m_start->plan) ? subtitlePath() : QString();
    request.arguments = argumentsFor(m_start->plan);
}

ConversionJob::Effective ConversionJob::effective() const {
    Effective result{m_fileInfo, ConversionSettings::current()};
    apply(m_overrides, result.info, result.settings);
    return result;
}

std::optional<Remedy> ConversionJob::nextRemedy(const RunEnding& ending, const QString& said) {
    const auto next = remedies::next(m_start->remedies, {ending, said, m_run->output()});
    if (!next) return std::nullopt;
    m_start->remedies = next->remedies;
    const auto [info, settings] = effective();
    return Remedy{next->name, next->notes,
                  argumentsFor(makePlan(info, m_audioTrackIndex, settings, m_start->remedies))};
}

QString ConversionJob::subtitlePath() const {
    return m_fileInfo.subtitleFileURL ? m_fileInfo.subtitleFileURL->toLocalFile() : QString();
}

ArgumentsBuilder ConversionJob::argumentsFor(const ConversionPlan& plan) const {
    return [plan, subtitles = subtitlePath(),
            source = m_fileInfo.fileURL.toLocalFile()](const RunContext& context) {
        if (carriesSubtitleFile(plan)) logInformation("Info: adding subtitles from file %@", subtitles);
        return toolArguments(plan, {source, subtitles, context.progressFile, context.output},
                             trialRunAsksForFixup(context.trialOutput));
    };
}

std::unique_ptr<RunProof> ConversionJob::proofOf(const ConversionPlan& plan) const {
    return std::make_unique<MovieProof>(
        ProofWorker::Request{m_request->source, m_request->subtitleFile, m_fileInfo.runtimeSeconds}, plan,
        m_request->keepsDamaged);
}

ConversionPlan ConversionJob::plan() const {
    if (m_start && m_state != JobState::Queued) return m_start->plan;
    const auto [info, settings] = effective();
    return makePlan(info, m_audioTrackIndex, settings);
}

std::optional<Receipt> ConversionJob::receipt() const {
    const auto end = ending();
    if (!end || end->receipt || !end->succeeded()) return end ? end->receipt : std::nullopt;
    Receipt unproven;
    unproven.notes.append(Texts::tr("Comparing outputs with their sources is switched off."));
    return unproven;
}

QString ConversionJob::stateInfoString() const {
    StatusFacts facts;
    facts.state = m_state;
    facts.progress = progress();
    facts.elapsedSeconds = secondsBetween(m_startDate, QDateTime::currentDateTime());
    facts.conversionSeconds = secondsBetween(m_startDate, m_stopDate);
    facts.audioTracks = m_fileInfo.audioTrackInformation;
    facts.audioTrackIndex = m_audioTrackIndex;
    return ::stateInfoString(facts);
}

void ConversionJob::noteProgress() {
    if (m_listener) m_listener->onProgressed(*this);
    Q_EMIT progressed();
}

void ConversionJob::noteEnd(const ConversionRun& run) {
    m_past = std::make_unique<Past>(Past{joined(run.arguments()), run.said(), run.ending(), std::nullopt});
    const bool succeeded = m_past->ending->succeeded();
    if (succeeded) m_request.reset();
    setState(succeeded ? JobState::Finished : JobState::Failed);
    if (m_listener) m_listener->onEnded(*this);
    Q_EMIT ended();
}

void ConversionJob::taskFinished() {
    ConversionRun* run = m_run.release();
    run->deleteLater();  // Still emitting.
    noteEnd(*run);
    const RunEnding ending = *this->ending();
    const bool succeeded = ending.succeeded();
    // A damaged movie stays where it is seen.
    if (succeeded && !ending.isKnownDamaged() && settings::AutoClean.value()) remove();
    if (ending.isWhole() && ending.isDurable && settings::AutoRemove.value())
        afterconversion::disposeOfSource(m_fileInfo);
    m_controller.startNextJobInQueue();
    afterconversion::countRun();
    m_controller.increaseUsages(true, true);
    if (settings::QuitAfterConversion.value() && m_controller.jobCountWithState(JobState::Converting) == 0 &&
        m_controller.jobCountWithState(JobState::Failed) == 0) {
        if (m_listener) m_listener->onQuitRequested();
        Q_EMIT quitRequested();
    }
}

void ConversionJob::pause() {
    if (m_state != JobState::Converting) return;
    m_run->pause();
    setState(JobState::Paused);
    holdSleepAssertion(false);
}

void ConversionJob::continueJob() {
    if (m_state == JobState::Queued) {
        start();
    } else if (m_state == JobState::Paused) {
        setState(JobState::Converting);
        holdSleepAssertion(true);
        m_run->resume();
    }
    m_controller.pauseContinueClicked(false);
}

void ConversionJob::setDestination(const QString& path) {
    m_destination = path;
    m_mayReplaceDestination = false;
    m_fileInfo.destinationURL = FileUrl::fromLocalFile(path);
}

void ConversionJob::queueAgain() {
    if (m_state != JobState::Failed) return;
    m_past.reset();
    m_fileInfo.destinationURL = FileUrl::fromLocalFile(m_destination);
    setState(JobState::Queued);
}

void ConversionJob::remove() {
    endRun();
    m_controller.removeJob(this);
    m_controller.startNextJobInQueue();
}

void ConversionJob::endRun() {
    if (m_run) m_run->abort();
    holdSleepAssertion(false);
    if (m_fileInfo.securityURL) folderaccess::stopAccessing(m_fileInfo.securityURL->toLocalFile());
    m_fileInfo.securityURL.reset();
}

failure::Explanation ConversionJob::explanation() const {
    if (m_past && m_past->explanation) return *m_past->explanation;
    const auto [info, settings] = effective();
    const bool usesEmbedded =
        !settings.value(settings::DisableBuiltinSubtitles) && !info.subtitleTrackIDs.isEmpty();
    return failure::explain({ending().value_or(RunEnding()), jobOutput(), arguments(), usesEmbedded,
                             info.subtitleFileURL.has_value()});
}
