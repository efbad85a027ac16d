#include "ui/window/LastQueueBar.h"

#include "app/queue/LastQueue.h"

#include <QPushButton>

LastQueueBar::LastQueueBar(QWidget* parent) : NoticeBar(parent) {
    setObjectName(QStringLiteral("lastQueueBar"));
    proposedButton()->setObjectName(QStringLiteral("continueButton"));
    proposedButton()->setText(tr("C&ontinue"));
    proposedButton()->setToolTip(tr("Put them into the list again and convert them"));
    otherButton()->setObjectName(QStringLiteral("forgetButton"));
    otherButton()->setText(tr("For&get"));
    otherButton()->setToolTip(tr("Leave them out; no file is deleted"));
}

void LastQueueBar::setLastQueue(LastQueue* lastQueue) {
    m_lastQueue = lastQueue;
    connect(proposedButton(), &QPushButton::clicked, lastQueue, &LastQueue::continueQueue);
    connect(otherButton(), &QPushButton::clicked, lastQueue, &LastQueue::forget);
    connect(lastQueue, &LastQueue::changed, this, &LastQueueBar::refresh);
    refresh();
}

void LastQueueBar::refresh() {
    const int count = m_lastQueue->count();
    if (count == 0) {
        conceal();
    } else {
        announce(tr("%n movie(s) from last time", nullptr, count));
    }
}
