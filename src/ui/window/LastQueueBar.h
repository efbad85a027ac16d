#pragma once

#include "ui/window/NoticeBar.h"

class LastQueue;

/// Offers what the last session left; hidden while nothing is offered. Main thread only.
class LastQueueBar : public NoticeBar {
    Q_OBJECT

public:
    explicit LastQueueBar(QWidget* parent = nullptr);

    /// `lastQueue` must outlive the bar.
    void setLastQueue(LastQueue* lastQueue);

private:
    void refresh();

    LastQueue* m_lastQueue = nullptr;
};
