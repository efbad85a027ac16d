#include "app/queue/EndAction.h"

#include "app/queue/JobQueue.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"

#include <utility>

namespace {

PowerAction powerActionOf(EndAction::Kind kind) {
    return kind == EndAction::Kind::Sleep ? PowerAction::Sleep : PowerAction::ShutDown;
}

bool needsPower(EndAction::Kind kind) {
    return kind == EndAction::Kind::Sleep || kind == EndAction::Kind::ShutDown;
}

QString failureText(EndAction::Kind kind) {
    return kind == EndAction::Kind::Sleep ? Texts::tr("The computer could not be put to sleep: %1")
                                          : Texts::tr("The computer could not be shut down: %1");
}

}  // namespace

EndAction::EndAction(JobQueue& queue, std::function<bool()> isMoreComing, std::chrono::milliseconds second,
                     QObject* parent)
    : QObject(parent), m_queue(queue), m_isMoreComing(std::move(isMoreComing)) {
    m_timer.setInterval(second);
    connect(&m_timer, &QTimer::timeout, this, &EndAction::tick);
    connect(&queue, &JobQueue::jobAdded, this, [this](const ConversionJob* job) {
        if (statusNotFinished(job->state())) onQueued();
    });
    connect(&queue, &JobQueue::jobStateChanged, this,
            [this](const ConversionJob*, JobState before, JobState now) { onStateChanged(before, now); });
}

void EndAction::choose(Kind kind) {
    if (kind == m_kind) return;
    if (kind == Kind::Nothing) {
        cancel();
        return;
    }
    m_kind = kind;
    if (m_timer.isActive()) startCountdown();
    Q_EMIT changed();
}

std::optional<int> EndAction::secondsLeft() const {
    return m_timer.isActive() ? std::optional(m_secondsLeft) : std::nullopt;
}

void EndAction::askWhatIsAvailable() {
    for (const Kind kind : {Kind::Sleep, Kind::ShutDown}) {
        sharedDesktop().askWhetherAllowed(powerActionOf(kind), this, [this, kind](bool isAllowed) {
            m_isAvailable[static_cast<size_t>(kind)] = isAllowed;
            Q_EMIT changed();
        });
    }
}

bool EndAction::deferQuit() {
    m_isQuitDeferred = m_timer.isActive() && needsPower(m_kind);
    return m_isQuitDeferred;
}

void EndAction::onStateChanged(JobState before, JobState now) {
    if (statusNotFinished(now)) {
        if (!statusNotFinished(before)) onQueued();
        return;
    }
    if (m_kind == Kind::Nothing) return;
    m_hasConverted = m_hasConverted || before == JobState::Converting;
    m_isOver = m_hasConverted && m_queue.isIdle();
    reconsider();
}

void EndAction::onQueued() {
    m_isOver = false;
    m_isQuitDeferred = false;
    stopCountdown();
}

void EndAction::reconsider() {
    if (!m_isOver) return;
    if (m_isMoreComing()) {
        stopCountdown();
    } else if (!m_timer.isActive()) {
        startCountdown();
    }
}

void EndAction::startCountdown() {
    m_secondsLeft = kSeconds;
    m_timer.start();
    Q_EMIT changed();
    Q_EMIT countdownStarted();
}

void EndAction::stopCountdown() {
    if (!m_timer.isActive()) return;
    m_timer.stop();
    Q_EMIT changed();
}

void EndAction::tick() {
    if (--m_secondsLeft == 0) {
        carryOut();
    } else {
        Q_EMIT changed();
    }
}

void EndAction::reset() {
    m_timer.stop();
    m_kind = Kind::Nothing;
    m_hasConverted = false;
    m_isOver = false;
    Q_EMIT changed();
}

void EndAction::cancel() {
    reset();
    if (std::exchange(m_isQuitDeferred, false)) Q_EMIT quitRequested();
}

void EndAction::carryOut() {
    if (!m_timer.isActive()) return;
    const Kind kind = m_kind;
    const bool quits = std::exchange(m_isQuitDeferred, false);
    reset();
    if (!needsPower(kind)) {
        Q_EMIT quitRequested();
        return;
    }
    sharedDesktop().carryOut(powerActionOf(kind), this, [this, kind, quits](const QString& error) {
        // A message that nobody can read is none: the application stays.
        if (!error.isEmpty()) {
            Q_EMIT message(failureText(kind).arg(error));
        } else if (quits) {
            Q_EMIT quitRequested();
        }
    });
}
