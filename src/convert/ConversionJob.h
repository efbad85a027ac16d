#pragma once

#include "convert/AudioHandling.h"
#include "convert/FailureExplanation.h"
#include "convert/JobController.h"
#include "convert/JobState.h"
#include "convert/Progress.h"
#include "convert/ToolOutput.h"
#include "probe/MKVFileInfo.h"

#include <QDateTime>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

class ReplacedFile;
class RunJournal;
class ToolProcess;
struct ToolExit;

/// One conversion of one movie. Holds what was asked for, runs the tool for it, and knows how that ended.
/// Main thread only; everything comes back through the event loop but the trial run of start(), which blocks
/// for about as long as the tool needs to copy one second of the movie.
class ConversionJob : public QObject {
    Q_OBJECT

public:
    /// `controller` outlives the job. `info` has its destination; the access to its securityURL, if any, ends
    /// with the job.
    ConversionJob(JobController& controller, MKVFileInfo info, qsizetype audioTrackIndex,
                  QObject* parent = nullptr);
    /// Leaves no tool running. An output that was not finished is deleted.
    ~ConversionJob() override;

    const MKVFileInfo& fileInfo() const { return m_fileInfo; }
    qsizetype audioTrackIndex() const { return m_audioTrackIndex; }
    JobState state() const { return m_state; }
    double progress() const { return m_progress; }
    /// True when the audio is only copied, so that the run is fast.
    bool fastmode() const { return m_fastmode; }
    bool finishedOK() const { return m_finishedOK; }
    bool finishedError() const { return m_finishedError; }
    QDateTime startDate() const { return m_startDate; }
    QDateTime stopDate() const { return m_stopDate; }
    /// What the tool got at the last start; empty before.
    const QStringList& arguments() const { return m_arguments; }
    /// Nothing for a movie without audio.
    std::optional<ConversionMethod> method() const;
    /// What the tool said, without its statistics.
    QString jobOutput() const { return m_output.text(); }
    /// The status in one line, with audio and ETA while converting.
    QString stateInfoString() const;
    /// Why a failed job failed.
    failure::Explanation explanation() const;

    /// Whether the output may replace what exists at the destination by then; that is kept aside until the
    /// output is whole. Without this right start() takes a free name beside it, so that nobody's file is
    /// lost.
    void setMayReplaceDestination(bool may) { m_mayReplaceDestination = may; }
    /// Names that other jobs are going to write, taken into account for that free name. May be null.
    void setDestinationIsTaken(std::function<bool(const QString&)> taken) {
        m_destinationIsTaken = std::move(taken);
    }

    /// Where the output was to go when the job was made.
    const QString& queuedDestination() const { return m_queuedDestination; }
    /// Whether the output can be written there.
    bool destinationIsWriteable() const;

    /// Computes fastmode from the chosen track.
    void presetSpeedInfo();
    void setSpeedInfoFromMethod(ConversionMethod method) { m_fastmode = method == ConversionMethod::Copy; }

    void start();
    void pause();
    /// Resumes a paused job, starts a queued one.
    void continueJob();
    /// Ends the run, if any; deletes what was written of the output unless it is finished; has the controller
    /// take the job off the list.
    void remove();

    /// Shows the output in the file manager (with Shift the input); for a failed job, explains the failure
    /// and offers to send the details to support.
    void reveal(bool shiftIsHeld);

    /// Whether the destination's volume can take a file of the input's size; says so in an alert if not.
    bool checkFreeSpace() const;

Q_SIGNALS:
    /// start() begins; what goes wrong from here on belongs to this job.
    void starting();
    /// The state changed and everything that belongs to the new one is in place.
    void stateChanged(JobState before, JobState now);
    /// The tool was started; arguments() holds what it got.
    void launched();
    /// The percentage was read anew.
    void progressed();
    /// The job is finished or failed, and the user was told what cannot wait.
    void ended();
    /// The setting to quit after the conversion applies: nothing converts any more and nothing failed.
    void quitRequested();

private:
    void setState(JobState state);
    void takeSleepAssertion();
    void releaseSleepAssertion();
    bool needFixup(int audioStream) const;
    void claimDestination();
    void prepareRun();
    QStringList buildArguments();
    void launch();
    void outputReceived(const QByteArray& bytes);
    void progressTimer();
    void readProgress();
    void taskFinished(const ToolExit& exit);
    void failed(const ToolExit& exit);
    void succeeded();
    void deleteOutput();
    void stopSecurityAccess();
    void endRun();

    JobController& m_controller;
    MKVFileInfo m_fileInfo;
    const QString m_queuedDestination;
    qsizetype m_audioTrackIndex = 0;
    JobState m_state = JobState::Queued;
    double m_progress = 0;
    bool m_fastmode = false;
    bool m_finishedOK = false;
    bool m_finishedError = false;
    bool m_mayReplaceDestination = false;
    bool m_wroteDestination = false;  ///< What is at the destination is this job's.
    std::function<bool(const QString&)> m_destinationIsTaken;

    ToolOutput m_output;
    QStringList m_arguments;
    std::unique_ptr<ToolProcess> m_task;
    std::unique_ptr<ProgressFile> m_progressFile;
    std::unique_ptr<ReplacedFile> m_replaced;
    std::unique_ptr<RunJournal> m_journal;
    QTimer m_timer;
    QDateTime m_startDate;
    QDateTime m_stopDate;
    quint32 m_sleepAssertion = 0;
};
