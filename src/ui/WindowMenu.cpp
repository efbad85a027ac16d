#include "ui/WindowMenu.h"

#include "support/Text.h"

#include <QLayout>
#include <QMenuBar>

void addWindowMenu(QWidget& window, QAction& close, const std::function<void()>& showMainWindow) {
    auto* bar = new QMenuBar(&window);
    QMenu* menu = bar->addMenu(text::localized("&Window"));
    menu->setObjectName(QStringLiteral("windowMenu"));
    QAction* show = menu->addAction(text::localized("Show &Main Window"), &window, showMainWindow);
    show->setObjectName(QStringLiteral("showMainWindowAction"));
    menu->addSeparator();
    close.setText(text::localized("Close &Window"));
    menu->addAction(&close);
    window.layout()->setMenuBar(bar);
}
