#pragma once

#include "convert/RunEnding.h"
#include "convert/RunProof.h"
#include "convert/StallWatch.h"
#include "convert/ToolOutput.h"
#include "support/base/FileStamp.h"
#include "tool/cage/Room.h"

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class ProgressFile;
class RunJournal;
class ToolProcess;

/// What the arguments of a run depend on besides the movie and the settings.
struct RunContext {
    QString output;  ///< The path of the file that is written.
    QString progressFile;
    QString trialOutput;  ///< What the trial run printed; empty: there was none.
};

using ArgumentsBuilder = std::function<QStringList(const RunContext& context)>;

/// Other arguments with which a failed run may succeed.
struct Remedy {
    QString name;       ///< Identifies the remedy: each is applied at most once in a run.
    QStringList notes;  ///< What is done differently, in words for the user.
    ArgumentsBuilder arguments;
};

/// What is to be converted, and how.
struct RunRequest {
    QString name;  ///< Of the movie; the progress file is named after it.
    QString source;
    QString subtitleFile;  ///< Read beside the source; empty: none.
    quint64 sourceBytes = 0;
    std::optional<qint32> runtimeSeconds;
    QString destination;
    /// Whether a file at the destination is replaced; it is kept until the output is complete. Otherwise a
    /// free name beside it is chosen, so that no file is lost.
    bool mayReplaceDestination = false;
    /// Whether the run ends with NameTaken if another one has got the name meanwhile.
    bool takesNoOtherName = false;
    /// Whether another job will write that path; such names are avoided, too. May be null.
    std::function<bool(const QString& path)> destinationIsTaken;
    bool keepsDamaged = false;  ///< See runending::Evidence.
    /// Whether the source may be deleted after the run, which therefore waits until the output is on the
    /// disk. Asked at its end. May be null.
    std::function<bool()> deletesSource;

    /// The arguments of the trial run, which writes to `output`; null or an empty list: there is none.
    std::function<QStringList(const QString& output)> trialArguments;
    ArgumentsBuilder arguments;
    /// Returns a remedy for an ending, from the tool's output; empty: there is none. May be null.
    std::function<std::optional<Remedy>(const RunEnding& ending, const QString& said)> remedy;
    /// Makes the proof of the output; null, or a null result: the tool's status
    /// and its output are believed.
    std::function<std::unique_ptr<RunProof>()> makeProof;
};

/// One conversion from the claim of its output to its ending: the tool's process, its progress and output,
/// the record for the case of a crash, and the file that is replaced. The tool may run several times, for
/// remedies, and is followed by the proof, if there is one; only then the output is complete and takes the
/// place of a replaced file. Main thread only; asynchronous except for the trial run, which blocks for about
/// the time that the tool needs to copy one second of the movie.
class ConversionRun : public QObject {
    Q_OBJECT

public:
    explicit ConversionRun(RunRequest request, QObject* parent = nullptr);
    /// Aborts the run.
    ~ConversionRun() override;

    /// Checks the source and the volume and claims the output. Returns false if the tool cannot be started:
    /// ending() says why. ended() is not emitted.
    bool prepare();
    /// Starts the tool. Call it after prepare().
    void launch();
    void pause();
    void resume();
    /// Ends the tool and the proof, and deletes an incomplete output as soon as the tool has ended. No signal
    /// follows. Does nothing for a run that has ended.
    void abort();

    /// The path of the output; differs from the request's destination if a file existed there.
    const QString& output() const { return m_output; }
    /// The arguments of the last start; empty before.
    const QStringList& arguments() const { return m_arguments; }
    /// 0 to 100; 100 during the proof.
    double percent() const { return m_percent; }
    /// Seconds since the tool last did something; 0 while it is active, and during the proof.
    double idleSeconds() const { return m_idleSeconds; }
    /// The tool's output without its statistics, and the marker of the ending.
    QString said() const { return m_said.text(); }
    /// The names of the remedies that were applied.
    const QStringList& remedies() const { return m_remedies; }
    /// Empty until the run has ended.
    const std::optional<RunEnding>& ending() const { return m_ending; }

Q_SIGNALS:
    /// The tool was started for the first time; arguments() is set.
    void launched();
    /// The percentage was updated.
    void progressed();
    /// ending() is set, and the output is complete or deleted. Emitted once.
    void ended();

private:
    spacecheck::Verdict checkFreeSpace() const;
    /// Succeeded, or why the tool is not started.
    RunEnding claimFiles();
    QString trialOutput() const;
    /// The files that the tool may reach.
    Room room() const;
    void startTool(const ArgumentsBuilder& arguments);
    void readProgress();
    void progressTimer();
    void watchActivity();
    void giveUp();
    void leaveToReaper();
    void taskFinished(const ToolExit& exit);
    bool applyRemedy(const RunEnding& ending);
    void prove(const RunEnding& ending);
    /// Runs `step`, or keeps it until resume() if the run is paused.
    void whenResumed(std::function<void()> step);
    void end(RunEnding ending);
    void syncOutput(const RunEnding& ending);
    void outputSynced(RunEnding ending, int error);
    void complete(RunEnding ending, bool isSynced);
    void note(const RunEnding& ending);

    const RunRequest m_request;
    QString m_output;
    QString m_trialOutput;
    QStringList m_arguments;
    QStringList m_remedies;
    QStringList m_notes;  ///< For the receipt.
    struct Failure {
        RunEnding ending;
        QString said;
    };
    /// What remedies were applied to: if they do not help, the usual arguments explain more.
    std::optional<Failure> m_firstFailure;
    ToolOutput m_said;
    double m_percent = 0;
    StallWatch m_stallWatch;
    QElapsedTimer m_clock;
    double m_idleSeconds = 0;
    bool m_isPaused = false;
    bool m_hasOutput = false;           ///< The file at m_output belongs to this run.
    std::function<void()> m_postponed;  ///< The step that follows resume(); null: none.
    std::unique_ptr<ToolProcess> m_task;
    std::unique_ptr<RunProof> m_proof;  ///< Null before the launch, after the end, and if there is none.
    std::unique_ptr<ProgressFile> m_progressFile;
    std::unique_ptr<RunJournal> m_journal;
    std::optional<FileStamp> m_source;  ///< When the run began.
    QTimer m_timer;
    std::optional<RunEnding> m_ending;
};
