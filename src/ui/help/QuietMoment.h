#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class QWidget;

/// Waits for a moment at which an unrequested window does not disturb the user: `window` is shown, there was
/// no typing, clicking or dragging for a while, and no dialog, menu or list is open. Costs nothing while no
/// action is pending. Main thread only.
class QuietMoment : public QObject {
    Q_OBJECT

public:
    static constexpr int kQuietMilliseconds = 3000;

    explicit QuietMoment(QWidget* window, int quietMilliseconds = kQuietMilliseconds);

    /// A further condition that delays the action; may be null.
    void setBusyWhen(std::function<bool()> isBusy) { m_isBusy = std::move(isBusy); }

    /// `action` is called once, never before this function returns. It replaces a pending action.
    void wait(std::function<void()> action);
    bool isWaiting() const { return m_action != nullptr; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isQuiet() const;
    void onQuiet();

    QPointer<QWidget> m_window;
    QTimer m_timer;
    std::function<void()> m_action;
    std::function<bool()> m_isBusy;
};
