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

    /// Without the statistics of the streams.
    const MKVFileInfo& fileInfo() const { return m_fileInfo; }
    qsizetype audioTrackIndex() const { return m_audioTrackIndex; }
    JobState state() const { return m_state; }
    /// Seconds without progress, from the setting `StallNotice` on; 0: it makes progress or is not running.
    double stalledSeconds() const;
    /// Percent.
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
    std::optional<RunEnding> ending() const { return m_past ? m_past->ending : std::nullopt; }
    /// The status in one line; with audio and remaining time while converting.
    QString stateInfoString() const;
    /// Why the job failed; valid for a failed job.
    failure::Explanation explanation() const;

    /// Is told what happens from now on, before the signals are emitted; null: nobody.
    void setListener(JobListener* listener) { m_listener = listener; }

    /// What the next run will be asked for. The members that follow from the movie are set at its start.
    RunRequest& request();

    /// Whether a file at the destination is replaced.
    bool mayReplaceDestination() const { return m_mayReplaceDestination; }
    void setMayReplaceDestination(bool may) { m_mayReplaceDestination = may; }
    /// Whether the job ends with NameTaken, and nothing done, if another run has got the destination's name
    /// when it starts; otherwise it takes a free name beside it.
    void setTakesNoOtherName(bool takesNone) { m_takesNoOtherName = takesNone; }

    /// What the user chose for this job alone; valid from the next start on.
    JobOverrides& overrides() { return m_overrides; }
    const JobOverrides& overrides() const { return m_overrides; }

    /// Where the output is to be written; see fileInfo() for where it is.
    const QString& queuedDestination() const { return m_destination; }
    /// Call it only while the job does not run. An existing file is not replaced.
    void setDestination(const QString& path);
    /// Whether the output can be written there.
    bool destinationIsWriteable() const;

    /// Lets what the records of both movies have in common share its memory.
    void shareFileInfo(const ConversionJob& other) { m_fileInfo.shareWith(other.m_fileInfo); }

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
    /// How a job ended.
    struct Past {
        QString arguments;                ///< Of the tool, with NUL between them; empty: it was not started.
        QString output;                   ///< What the tool said.
        std::optional<RunEnding> ending;  ///< Empty: in an earlier session.
        std::optional<failure::Explanation> explanation;  ///< Of a failure of an earlier session.
    };
    /// What the last start did with the movie.
    struct Start {
        Remedies remedies;
        ConversionPlan plan;
    };

    Effective effective() const;
    void setState(JobState state);
    void holdSleepAssertion(bool hold);
    void completeRequest();
    std::unique_ptr<RunProof> proofOf(const ConversionPlan& plan) const;
    std::optional<Remedy> nextRemedy(const RunEnding& ending, const QString& said);
    QString subtitlePath() const;
    ArgumentsBuilder argumentsFor(const ConversionPlan& plan) const;
    void noteProgress();
    void noteEnd(const ConversionRun& run);
    void taskFinished();
    void endRun();

    JobController& m_controller;
    MKVFileInfo m_fileInfo;
    qsizetype m_audioTrackIndex;
    QString m_destination;
    JobOverrides m_overrides;
    JobState m_state = JobState::Queued;
    bool m_mayReplaceDestination = false;
    bool m_takesNoOtherName = false;
    bool m_fastmode = false;
    bool m_isUnprobed = false;
    quint32 m_sleepAssertion = 0;
    JobListener* m_listener = nullptr;
    // A queue may have thousands of jobs that wait, or are over: what only some of them have is not in all.
    std::unique_ptr<RunRequest> m_request;  ///< Null: nobody has asked for it yet.
    std::unique_ptr<Start> m_start;         ///< Null before the first start.
    std::unique_ptr<ConversionRun> m_run;   ///< Null before the start and after the end.
    std::unique_ptr<Past> m_past;           ///< Null before the end.
    QDateTime m_startDate;
    QDateTime m_stopDate;
};
