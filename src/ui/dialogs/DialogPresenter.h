#pragma once

#include "support/alerts/AlertPresenter.h"

#include <QList>
#include <QPointer>
#include <QWidget>

/// Shows alerts as dialogs: over the window that they name, else over the active window, else over the main
/// window, else in the middle of the screen; so it also works before the main window exists and while it is
/// closed. Destroying the presenter closes open dialogs without an answer. Main thread only.
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
    /// Runs a nested event loop. If the window below is destroyed meanwhile, the answer is the alert's
    /// cancelResponse().
    AlertAnswer present(const Alert& alert) override;
    /// `dismissed` is called at most once; it is not called if the main window is destroyed while the sheet
    /// is shown.
    void presentSheet(const Alert& alert, const std::function<void(const AlertAnswer&)>& dismissed) override;
    void presentNonModal(const NonModalAlert& alert) override;

private:
    QWidget* windowAtWork() const;
    QWidget* windowFor(AlertWindow window) const;
    bool isMainWindowShown() const;
    /// Centres the dialog over `over`, or on the screen if that is null.
    void show(QWidget& dialog, const QWidget* over, bool toFront);
    void keep(QWidget* window);

    QPointer<QWidget> m_mainWindow;
    QPointer<QWidget> m_preferencesWindow;
    QList<QPointer<QWidget>> m_open;  ///< Sheets and panels, which delete themselves when they are closed.
};
