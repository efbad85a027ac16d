#pragma once

#include "ui/window/NoticeBar.h"

class EndAction;

/// Counts down to what happens at the end of the queue; hidden at other times. Main thread only.
class EndActionBar : public NoticeBar {
    Q_OBJECT

public:
    /// `endAction` must outlive the bar.
    explicit EndActionBar(EndAction& endAction, QWidget* parent = nullptr);

private:
    QString text() const;
    void refresh();

    EndAction& m_endAction;
};
