#include "ui/dialogs/DialogPresenter.h"

#include "ui/dialogs/AlertDialog.h"
#include "ui/dialogs/AlertPanel.h"
#include "ui/look/Placement.h"

#include <QApplication>
#include <QEventLoop>

#include <memory>

namespace {

/// Whether a dialog can be shown over the window: that of a native panel is never shown, and a minimised
/// window hides its dialogs.
bool canCarry(const QWidget* window) {
    return window && window->isVisible() && !window->isMinimized() &&
           !window->testAttribute(Qt::WA_DontShowOnScreen) && !qobject_cast<const AlertPanel*>(window);
}

}  // namespace

DialogPresenter::~DialogPresenter() {
    for (const QPointer<QWidget>& window : std::as_const(m_open))
        delete window.data();
}

bool DialogPresenter::isMainWindowShown() const {
    return canCarry(m_mainWindow);
}

QWidget* DialogPresenter::windowAtWork() const {
    for (QWidget* window :
         {QApplication::activeModalWidget(), QApplication::activeWindow(), m_mainWindow.data()}) {
        if (canCarry(window)) return window;
    }
    return nullptr;
}

QWidget* DialogPresenter::windowFor(AlertWindow window) const {
    // Above a modal window the alert must be its child: otherwise the user could not answer it.
    if (window == AlertWindow::AtWork || canCarry(QApplication::activeModalWidget())) return windowAtWork();
    QWidget* named = window == AlertWindow::Preferences ? m_preferencesWindow : m_mainWindow;
    return canCarry(named) ? named : windowAtWork();
}

AlertAnswer DialogPresenter::present(const Alert& alert) {
    QWidget* window = windowFor(alert.window);
    // A destroyed window deletes the dialog as its child, even while it is shown.
    const QPointer<AlertDialog> dialog = new AlertDialog(alert, window);
    const AlertAnswer unanswered = dialog->answer();
    dialog->setWindowModality(Qt::ApplicationModal);
    // From Qt 6.8 on exec() would show it a second time.
    QEventLoop answering;
    QObject::connect(dialog, &QDialog::finished, &answering, &QEventLoop::quit);
    QObject::connect(dialog, &QObject::destroyed, &answering, &QEventLoop::quit);
    show(*dialog, window, alert.activatesApplication);
    if (dialog && dialog->isVisible()) answering.exec(QEventLoop::DialogExec);
    if (!dialog) return unanswered;
    const std::unique_ptr<AlertDialog> answered(dialog);
    return answered->answer();
}

void DialogPresenter::presentSheet(const Alert& alert,
                                   const std::function<void(const AlertAnswer&)>& dismissed) {
    auto* dialog = new AlertDialog(alert, m_mainWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    QObject::connect(dialog, &QDialog::finished, dialog, [dialog, dismissed] {
        if (dismissed) dismissed(dialog->answer());
    });
    keep(dialog);
    show(*dialog, isMainWindowShown() ? m_mainWindow : nullptr, alert.activatesApplication);
}

void DialogPresenter::presentNonModal(const NonModalAlert& alert) {
    auto* panel = new AlertPanel(alert);
    keep(panel);
    show(*panel, isMainWindowShown() ? m_mainWindow : nullptr, true);
}

void DialogPresenter::show(QWidget& dialog, const QWidget* over, bool toFront) {
    dialog.setAttribute(Qt::WA_QuitOnClose, false);  // An alert alone does not keep the application running.
    dialog.adjustSize();
    centreOver(dialog, over);
    dialog.show();
    if (!toFront) return;
    dialog.raise();
    dialog.activateWindow();
    QApplication::alert(&dialog);  // For desktops that do not let windows come to the front.
}

void DialogPresenter::keep(QWidget* window) {
    m_open.removeAll(QPointer<QWidget>());
    m_open.append(window);
}
