#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class QWidget;

/// Waits for a moment at which a window that nobody called for disturbs nobody: `window` is shown, nothing
/// was typed, clicked or dragged for a while, and no dialog, menu or list is open. Costs nothing while nobody
/// waits. Main thread only.
class QuietMoment : public QObject {
    Q_OBJECT

public:
    static constexpr int kQuietMilliseconds = 3000;

    explicit QuietMoment(QWidget* window, int quietMilliseconds = kQuietMilliseconds);

    /// What else is no quiet moment; may be null.
    void setBusyWhen(std::function<bool()> isBusy) { m_isBusy = std::move(isBusy); }

    /// `action` is called once, never before this returns. One that waits already is replaced.
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
