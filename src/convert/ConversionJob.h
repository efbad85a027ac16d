#pragma once

#include "convert/AudioHandling.h"
#include "convert/ConversionPlan.h"
#include "convert/FailureExplanation.h"
#include "convert/JobController.h"
#include "convert/JobState.h"
#include "convert/Progress.h"
#include "convert/Receipt.h"
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

/// The conversion of one movie: holds the request, runs the tool and keeps the result. Main thread only.
/// Everything is asynchronous except for the trial run of start(), which blocks for about the time that the
/// tool needs to copy one second of the movie.
class ConversionJob : public QObject {
    Q_OBJECT

public:
    /// `controller` must outlive the job. `info` must have its destination; the access to its securityURL, if
    /// any, is released with the job.
    ConversionJob(JobController& controller, MKVFileInfo info, qsizetype audioTrackIndex,
                  QObject* parent = nullptr);
    /// Ends the tool. An incomplete output is deleted.
    ~ConversionJob() override;

    const MKVFileInfo& fileInfo() const { return m_fileInfo; }
    qsizetype audioTrackIndex() const { return m_audioTrackIndex; }
    JobState state() const { return m_state; }
    double progress() const { return m_progress; }
    /// True if the audio is only copied, so that the run is fast.
    bool fastmode() const { return m_fastmode; }
    bool finishedOK() const { return m_finishedOK; }
    bool finishedError() const { return m_finishedError; }
    QDateTime startDate() const { return m_startDate; }
    QDateTime stopDate() const { return m_stopDate; }
    /// The arguments of the last start; empty before.
    const QStringList& arguments() const { return m_arguments; }
    /// Empty for a movie without audio.
    std::optional<ConversionMethod> method() const;
    /// The output of the tool, without its statistics.
    QString jobOutput() const { return m_output.text(); }
    /// The status in one line; with audio and remaining time while converting.
    QString stateInfoString() const;
    /// What the last start does; before the first one, what it would do with the present settings.
    ConversionPlan plan() const;
    /// The proof of the output; empty before the job is finished, and if nothing was proved.
    const std::optional<Receipt>& receipt() const { return m_receipt; }
    /// To be called before the job is finished.
    void setReceipt(Receipt receipt) { m_receipt = std::move(receipt); }
    /// Why the job failed; valid for a failed job.
    failure::Explanation explanation() const;

    /// Whether the output may replace a file that exists at the destination when the run starts; that file is
    /// kept until the output is complete. Otherwise start() chooses a free name beside it, so that no file is
    /// lost.
    void setMayReplaceDestination(bool may) { m_mayReplaceDestination = may; }
    /// Returns whether another job will write that path; start() avoids such names, too. May be null.
    void setDestinationIsTaken(std::function<bool(const QString&)> taken) {
        m_destinationIsTaken = std::move(taken);
    }

    /// The destination when the job was created.
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
    /// Ends the run, if any; deletes the output unless it is complete; asks the controller to remove the job.
    void remove();

    /// Shows the output in the file manager (with Shift the input); for a failed job, explains the failure
    /// and offers to send the details to support.
    void reveal(bool shiftIsHeld);

    /// Whether the destination's volume can store a file of the input's size; shows an alert if not.
    bool checkFreeSpace() const;

Q_SIGNALS:
    /// start() begins: errors from now on belong to this job.
    void starting();
    /// The state has changed and all properties match the new one.
    void stateChanged(JobState before, JobState now);
    /// The tool was started; arguments() is set.
    void launched();
    /// The percentage was updated.
    void progressed();
    /// The job is finished or failed, and urgent messages were shown to the user.
    void ended();
    /// Quit, as the setting says: no conversion is running any more and none has failed.
    void quitRequested();

private:
    void setState(JobState state);
    void acquireSleepAssertion();
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
    bool m_wroteDestination = false;  ///< The file at the destination was written by this job.
    std::function<bool(const QString&)> m_destinationIsTaken;

    ToolOutput m_output;
    QStringList m_arguments;
    std::optional<ConversionPlan> m_plan;
    std::optional<Receipt> m_receipt;
    std::unique_ptr<ToolProcess> m_task;
    std::unique_ptr<ProgressFile> m_progressFile;
    std::unique_ptr<ReplacedFile> m_replaced;
    std::unique_ptr<RunJournal> m_journal;
    QTimer m_timer;
    QDateTime m_startDate;
    QDateTime m_stopDate;
    quint32 m_sleepAssertion = 0;
};
