#include "ui/dialogs/DialogPresenter.h"

#include "ui/dialogs/AlertDialog.h"
#include "ui/dialogs/AlertPanel.h"
#include "ui/look/Placement.h"

#include <QApplication>

#include <memory>

namespace {

/// A window that a dialog may lie on: that of a native panel is never shown, and a minimised one takes its
/// dialogs with it.
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
    // Over a modal window there is no choice: below it an alert could not be answered.
    if (window == AlertWindow::AtWork || canCarry(QApplication::activeModalWidget())) return windowAtWork();
    QWidget* named = window == AlertWindow::Preferences ? m_preferencesWindow : m_mainWindow;
    return canCarry(named) ? named : windowAtWork();
}

AlertAnswer DialogPresenter::present(const Alert& alert) {
    QWidget* window = windowFor(alert.window);
    // A window that is destroyed takes the dialog along, in the middle of exec().
    const QPointer<AlertDialog> dialog = new AlertDialog(alert, window);
    const AlertAnswer unanswered = dialog->answer();
    dialog->setWindowModality(Qt::ApplicationModal);
    show(*dialog, window, alert.activatesApplication);
    dialog->exec();
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
    dialog.setAttribute(Qt::WA_QuitOnClose, false);  // An alert is not what keeps the application alive.
    dialog.adjustSize();
    centreOver(dialog, over);
    dialog.show();
    if (!toFront) return;
    dialog.raise();
    dialog.activateWindow();
    QApplication::alert(&dialog);  // Where the desktop does not let windows come to the front.
}

void DialogPresenter::keep(QWidget* window) {
    m_open.removeAll(QPointer<QWidget>());
    m_open.append(window);
}
