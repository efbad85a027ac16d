#pragma once

#include "convert/JobState.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>
#include <functional>
#include <optional>

class ConversionJob;
class JobQueue;

/// What the user wants to happen when the present queue is done. It is carried out a minute after the last
/// job has ended, provided that one was converted since the choice, and no movie is on its way to the queue.
/// Jobs that the user pauses or removes do not end the queue. A job that is queued during the minute ends the
/// countdown and keeps the choice, which then applies to the next end. Not stored. Main thread only.
class EndAction : public QObject {
    Q_OBJECT

public:
    enum class Kind { Nothing, Quit, Sleep, ShutDown };
    static constexpr int kSeconds = 60;

    /// `queue` must outlive this object. `isMoreComing` returns whether movies are being probed, or wait for
    /// that or for the user; call reconsider() when that changes. `second` is the step of the countdown.
    EndAction(JobQueue& queue, std::function<bool()> isMoreComing,
              std::chrono::milliseconds second = std::chrono::seconds(1), QObject* parent = nullptr);

    Kind kind() const { return m_kind; }
    /// Another choice during the countdown begins it anew; Nothing cancels it.
    void choose(Kind kind);
    /// Until it is carried out; empty: there is no countdown.
    std::optional<int> secondsLeft() const;
    /// Whether the system lets the user do it, as far as it has answered.
    bool isAvailable(Kind kind) const { return m_isAvailable[static_cast<size_t>(kind)]; }
    /// Asks the system again; changed() follows.
    void askWhatIsAvailable();
    /// Called when the application is to quit because its movies are converted. Returns true if the countdown
    /// to sleep or shutdown is running: quitRequested() then follows after it.
    bool deferQuit();

    /// Both end the countdown, and the choice is Nothing again. carryOut() does nothing without a countdown.
    void carryOut();
    void cancel();
    void reconsider();

Q_SIGNALS:
    /// kind(), secondsLeft() or isAvailable() have changed.
    void changed();
    void countdownStarted();
    void quitRequested();
    /// Why the system refused.
    void message(const QString& text);

private:
    void onStateChanged(JobState before, JobState now);
    void onQueued();
    void startCountdown();
    void stopCountdown();
    void reset();
    void tick();

    JobQueue& m_queue;
    const std::function<bool()> m_isMoreComing;
    QTimer m_timer;
    int m_secondsLeft = 0;
    Kind m_kind = Kind::Nothing;
    std::array<bool, 4> m_isAvailable{true, true, false, false};
    bool m_hasConverted = false;  ///< Since the choice.
    bool m_isOver = false;        ///< The last job of the queue has ended.
    bool m_isQuitDeferred = false;
};
