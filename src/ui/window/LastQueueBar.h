#pragma once

#include <QWidget>

class ElidedLabel;
class LastQueue;
class QPushButton;

/// One line above the list that offers what the last session left; hidden while nothing is offered. Main
/// thread only.
class LastQueueBar : public QWidget {
    Q_OBJECT

public:
    explicit LastQueueBar(QWidget* parent = nullptr);

    /// `lastQueue` must outlive the bar.
    void setLastQueue(LastQueue* lastQueue);

Q_SIGNALS:
    /// The bar is about to be hidden and had the focus.
    void focusReleased();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();

    LastQueue* m_lastQueue = nullptr;
    ElidedLabel* m_label = nullptr;
    QPushButton* m_continue = nullptr;
    QPushButton* m_forget = nullptr;
};
