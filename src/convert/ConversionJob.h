#pragma once

#include "convert/ConversionRun.h"
#include "convert/FailureExplanation.h"
#include "convert/JobController.h"
#include "convert/JobOverrides.h"
#include "convert/JobState.h"
#include "convert/plan/AudioHandling.h"
#include "probe/MKVFileInfo.h"

#include <QDateTime>
#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

/// What an earlier session left of a failed job.
struct PastFailure {
    failure::Explanation explanation;
    QStringList arguments;  ///< Of the tool; empty: it was not started.
    QString output;         ///< What the tool said.
};

/// The conversion of one movie: holds the request and the state, and has a ConversionRun do the work. Main
/// thread only. Shows nothing to the user; see app/actions for that.
class ConversionJob : public QObject {
    Q_OBJECT

public:
    /// `controller` must outlive the job. Without a destination in `info`, setDestination() has to follow.
    /// The access to its securityURL, if any, is released with the job.
    ConversionJob(JobController& controller, MKVFileInfo info, qsizetype audioTrackIndex,
                  QObject* parent = nullptr);
    /// Ends the tool. An incomplete output is deleted.
    ~ConversionJob() override;

    const MKVFileInfo& fileInfo() const { return m_fileInfo; }
    qsizetype audioTrackIndex() const { return m_audioTrackIndex; }
    JobState state() const { return m_state; }
    /// Percent.
    /// Seconds without progress, from the setting `StallNotice` on; 0: it makes progress or is not running.
    double stalledSeconds() const;
    double progress() const;
    /// True if the audio is only copied, so that the run is fast.
    bool fastmode() const { return m_fastmode; }
    bool finishedOK() const { return m_state == JobState::Finished; }
    /// Whether the job failed, other than for lack of space on the destination's volume.
    bool finishedError() const;
    QDateTime startDate() const { return m_startDate; }
    QDateTime stopDate() const { return m_stopDate; }
    /// Empty for a movie without audio.
    std::optional<ConversionMethod> method() const;
    /// The arguments of the last start; empty before.
    QStringList arguments() const;
    /// The output of the tool, without its statistics.
    QString jobOutput() const;
    /// What the last start did with the movie; before that, what a start would do with the present settings.
    ConversionPlan plan() const;
    /// What the job produced; empty before its end, and for a failed job whose output was not compared.
    std::optional<Receipt> receipt() const;
    /// How the job ended; empty before, and for a failure of an earlier session.
    std::optional<RunEnding> ending() const { return m_run ? m_run->ending() : std::nullopt; }
    /// The status in one line; with audio and remaining time while converting.
    QString stateInfoString() const;
    /// Why the job failed; valid for a failed job.
    failure::Explanation explanation() const;

    /// What the next run will be asked for. The members that follow from the movie are set at its start.
    RunRequest& request() { return m_request; }
    const RunRequest& request() const { return m_request; }
    void setMayReplaceDestination(bool may) { m_request.mayReplaceDestination = may; }
    void setDestinationIsTaken(std::function<bool(const QString&)> taken) {
        m_request.destinationIsTaken = std::move(taken);
    }

    /// What the user chose for this job alone; valid from the next start on.
    JobOverrides& overrides() { return m_overrides; }
    const JobOverrides& overrides() const { return m_overrides; }

    /// Where the output is to be written; see fileInfo() for where it is.
    const QString& queuedDestination() const { return m_request.destination; }
    /// Call it only while the job does not run. An existing file is not replaced.
    void setDestination(const QString& path);
    /// Whether the output can be written there.
    bool destinationIsWriteable() const;

    /// Computes fastmode from the chosen track.
    void presetSpeedInfo();

    /// Makes the job a failed one, as an earlier session left it. Call it before the job is queued.
    void restoreFailure(PastFailure failure);
    /// The record has only the paths, because the movie could not be probed: the job cannot be converted.
    /// Such a job must be a failed one.
    void setIsUnprobed() { m_isUnprobed = true; }
    bool isUnprobed() const { return m_isUnprobed; }
    /// The record of the movie, which can be probed by now. Paths and choices of the job stay.
    void completeFileInfo(MKVFileInfo info, qsizetype audioTrackIndex);

    /// Blocks during the trial run; see ConversionRun.
    void start();
    void pause();
    /// Resumes a paused job, starts a queued one.
    void continueJob();
    /// Queues a failed job again, as if it had never run.
    void queueAgain();
    /// Ends the run, if any; deletes the output unless it is complete; asks the controller to remove the job.
    void remove();

Q_SIGNALS:
    /// start() begins: errors from now on belong to this job.
    void starting();
    /// The state has changed and all properties match the new one.
    void stateChanged(JobState before, JobState now);
    /// The tool was started; arguments() is set.
    void launched();
    /// The percentage was updated.
    void progressed();
    /// The job is finished or failed; ending() is set.
    void ended();
    /// Quit, as the setting says: no conversion is running any more and none has failed.
    void quitRequested();

private:
    /// The movie and the settings with the job's overrides.
    struct Effective {
        MKVFileInfo info;
        ConversionSettings settings;
    };
    Effective effective() const;
    void setState(JobState state);
    void holdSleepAssertion(bool hold);
    void completeRequest();
    std::unique_ptr<RunProof> proofOf(const ConversionPlan& plan) const;
    std::optional<Remedy> nextRemedy(const RunEnding& ending, const QString& said);
    QString subtitlePath() const;
    ArgumentsBuilder argumentsFor(const ConversionPlan& plan) const;
    void taskFinished();
    void endRun();

    JobController& m_controller;
    MKVFileInfo m_fileInfo;
    qsizetype m_audioTrackIndex;
    JobState m_state = JobState::Queued;
    bool m_fastmode = false;
    RunRequest m_request;
    JobOverrides m_overrides;
    Remedies m_remedies;                   ///< Applied in the last start.
    std::optional<ConversionPlan> m_plan;  ///< Of the last start.
    std::unique_ptr<ConversionRun> m_run;  ///< The last one; null before the first start.
    std::optional<PastFailure> m_pastFailure;
    bool m_isUnprobed = false;
    QDateTime m_startDate;
    QDateTime m_stopDate;
    quint32 m_sleepAssertion = 0;
};
