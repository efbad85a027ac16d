#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QueueProgress;

/// The progress of the whole queue in the status area: a bar and "94 of 200, about 1 h left". Hidden unless
/// several movies are to be converted. The status bar hides it while it shows a message. Main thread only.
class TotalProgress : public QWidget {
    Q_OBJECT

public:
    /// `progress` must outlive the widget.
    explicit TotalProgress(const QueueProgress& progress, QWidget* parent = nullptr);

private:
    void refresh();

    const QueueProgress& m_progress;
    QWidget* m_content;  ///< Hidden instead of this widget, which the status bar shows and hides.
    QProgressBar* m_bar;
    QLabel* m_label;
};
