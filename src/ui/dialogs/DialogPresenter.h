#pragma once

#include "support/alerts/AlertPresenter.h"

#include <QList>
#include <QPointer>
#include <QWidget>

/// Shows alerts as dialogs: over the window that they name, else over the window at work, else over the main
/// window, else in the middle of the screen, so also before the main window is there and while it is closed.
/// What is open closes, unanswered, with the presenter. Main thread only.
class DialogPresenter : public AlertPresenter {
public:
    DialogPresenter() = default;
    ~DialogPresenter() override;
    DialogPresenter(const DialogPresenter&) = delete;
    DialogPresenter& operator=(const DialogPresenter&) = delete;

    /// Not owned; may be null, and may be destroyed at any time.
    void setMainWindow(QWidget* window) { m_mainWindow = window; }
    void setPreferencesWindow(QWidget* window) { m_preferencesWindow = window; }

    bool waitsForUser() const override { return true; }
    /// Runs an event loop. Where the window below is destroyed meanwhile, the answer is the
    /// alert's cancelResponse().
    AlertAnswer present(const Alert& alert) override;
    /// `dismissed` is called at most once: never when the main window goes while the sheet is shown.
    void presentSheet(const Alert& alert, const std::function<void(const AlertAnswer&)>& dismissed) override;
    void presentNonModal(const NonModalAlert& alert) override;

private:
    QWidget* windowAtWork() const;
    QWidget* windowFor(AlertWindow window) const;
    bool isMainWindowShown() const;
    /// Centred over `over`, or on the screen where that is null.
    void show(QWidget& dialog, const QWidget* over, bool toFront);
    void keep(QWidget* window);

    QPointer<QWidget> m_mainWindow;
    QPointer<QWidget> m_preferencesWindow;
    QList<QPointer<QWidget>> m_open;  ///< Sheets and panels, which delete themselves when they close.
};
