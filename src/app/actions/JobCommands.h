#pragma once

#include "convert/JobState.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

class ConversionJob;
class FailureActions;
class JobQueue;

/// What the user can have done with one or several jobs of the queue. Main thread only.
class JobCommands : public QObject {
    Q_OBJECT

public:
    enum class Command {
        Pause,
        Continue,
        StartNow,  ///< Beside those that run, at most kMostAtOnce.
        StartNext,
        MoveUp,
        MoveDown,
        Play,          ///< One movie.
        Show,          ///< In the file manager; a single failed job is explained instead.
        ShowOriginal,  ///< The same with the source.
        TryAgain,
        CopyCommandLine,
        CopyReceipt,
        Remove
    };
    /// From the top of the queue. A job may be removed while the user decides.
    using Jobs = QList<QPointer<ConversionJob>>;

    /// As many as the preferences offer to be converted at a time.
    static constexpr int kMostAtOnce = 8;

    /// Both must outlive this object.
    JobCommands(JobQueue& queue, FailureActions& failures, QObject* parent = nullptr);

    /// Those of the jobs for which the command makes sense; empty: it cannot be performed.
    static QList<ConversionJob*> fitting(Command command, const Jobs& jobs);
    /// Pauses what runs; else continues what is paused; else starts what waits.
    static Command pauseOrContinue(const Jobs& jobs);

    /// Performs the command for those of the jobs for which it makes sense now. The explanation of a failure
    /// blocks until the user has chosen.
    void perform(Command command, const Jobs& jobs);

    /// See JobQueue::move().
    void move(const QList<ConversionJob*>& jobs, qsizetype row);
    /// Opens the output in the user's program for it.
    void play(const ConversionJob& job);

Q_SIGNALS:
    /// Why a command was not performed.
    void message(const QString& text);
    /// For the clipboard.
    void copied(const QString& text);

private:
    Jobs stillQueued(const Jobs& jobs) const;
    static void forEach(const QList<ConversionJob*>& jobs, const std::function<void(ConversionJob&)>& action);
    void show(const QList<ConversionJob*>& jobs, bool isOriginal);

    JobQueue& m_queue;
    FailureActions& m_failures;
};
