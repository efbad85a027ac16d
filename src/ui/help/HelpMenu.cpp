#include "ui/help/HelpMenu.h"

#include "app/AppDelegate.h"
#include "support/base/Texts.h"
#include "support/reports/QuillonLib.h"
#include "ui/help/AboutWindow.h"

#include <QApplication>
#include <QMenu>

namespace {

void showAbout(const AppDelegate& delegate, QWidget& window) {
    auto* about = window.findChild<AboutWindow*>();
    if (!about) about = new AboutWindow(delegate.version(), delegate.build(), &window);
    about->show();
    about->raise();
    about->activateWindow();
}

void showThatUpdatesAreFetched(AppDelegate& delegate, bool isFetching) {
    if (isFetching) {
        QApplication::setOverrideCursor(Qt::BusyCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
    Q_EMIT delegate.statusMessage(isFetching ? Texts::tr("Looking for updates…") : QString());
}

}  // namespace

void setUpHelpMenu(const QMenu& menu, AppDelegate& delegate, QWidget& window) {
    for (QAction* action : menu.actions()) {
        if (const QVariant tag = action->property("tag"); tag.isValid()) {
            QObject::connect(action, &QAction::triggered, &delegate,
                             [&delegate, tag] { delegate.openDocumentationWindow(tag.toInt()); });
        } else if (const QVariant page = action->property("makersPage"); page.isValid()) {
            QObject::connect(action, &QAction::triggered, &delegate,
                             [page] { QuillonLib::shared().openURL(page.toInt()); });
        } else if (action->objectName() == "updateAction") {
            QObject::connect(action, &QAction::triggered, &delegate, &AppDelegate::checkForUpdatesAction);
            QObject::connect(&delegate, &AppDelegate::fetchingUpdates, &window, [&delegate](bool isFetching) {
                showThatUpdatesAreFetched(delegate, isFetching);
            });
        } else if (action->objectName() == "aboutAction") {
            QObject::connect(action, &QAction::triggered, &window,
                             [&delegate, &window] { showAbout(delegate, window); });
        }
        if (action->objectName() == "rateAction") {
            const auto refresh = [action, &delegate] { action->setEnabled(delegate.isRateable()); };
            QObject::connect(&delegate, &AppDelegate::minimumUsagesForRatingChanged, action, refresh);
            refresh();
        }
    }
}
