#pragma once

#include "convert/plan/PlanLines.h"

#include <QFrame>

/// Lists the tracks that are left out, each with its reason. Deletes itself when it is closed, which Escape
/// and any click outside do. Main thread only.
class LeftOutPopup : public QFrame {
    Q_OBJECT

public:
    LeftOutPopup(const QList<LeftOutTrack>& tracks, QWidget* parent);

    /// Within the limits of the screen.
    void showBelow(const QWidget& anchor);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
