#include "app/OpenWindows.h"

#include "app/queue/JobQueue.h"
#include "settings/Settings.h"

#include <utility>

OpenWindows::OpenWindows(JobQueue& queue, std::function<Work()> work, std::chrono::milliseconds patience,
                         QObject* parent)
    : QObject(parent), m_work(std::move(work)) {
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        if (isDone()) Q_EMIT endRequested();
    });
    connect(&queue, &JobQueue::jobEnded, this, [this](const ConversionJob* job) { noteEnding(*job); });
    connect(&queue, &JobQueue::titleChanged, this, &OpenWindows::reconsider);
    settings::StayOpen.onChange(this, [this] { reconsider(); });
}

void OpenWindows::noteEnding(const ConversionJob& job) {
    const auto ending = job.ending();
    const bool isTrouble = job.state() == JobState::Failed || (ending && ending->isKnownDamaged());
    if (isTrouble && !m_isMainOpen) m_hasUnseenTrouble = true;
    reconsider();
}

void OpenWindows::set(bool isMainOpen, bool areOthersOpen) {
    const bool wasMainOpen = std::exchange(m_isMainOpen, isMainOpen);
    const bool wereOthersOpen = std::exchange(m_areOthersOpen, areOthersOpen);
    if (isMainOpen) m_hasUnseenTrouble = false;
    if (wasMainOpen && !isMainOpen) {
        const Work work = m_work();
        m_hasGoneOn = work.isConverting || work.isWaiting;
        if (m_hasGoneOn) Q_EMIT wentOn(work.isConverting);
    }
    const bool isLastClosed = (wasMainOpen || wereOthersOpen) && !isMainOpen && !areOthersOpen;
    if (isLastClosed && isDone()) {
        Q_EMIT endRequested();
    } else {
        if (isLastClosed) Q_EMIT staysWithoutWindows();
        reconsider();
    }
}

bool OpenWindows::isDone() const {
    if (m_isMainOpen || m_areOthersOpen || m_hasUnseenTrouble || settings::StayOpen.value()) return false;
    const Work work = m_work();
    return !work.isConverting && !work.isWaiting && !work.isExpected;
}

void OpenWindows::reconsider() {
    if (m_hasGoneOn) {
        const Work work = m_work();
        if (m_isMainOpen || (!work.isConverting && !work.isWaiting)) {
            m_hasGoneOn = false;
            Q_EMIT settled();
        }
    }
    if (!isDone()) {
        m_patience.stop();
    } else if (!m_patience.isActive()) {
        m_patience.start();
    }
}
