#include "ui/widgets/WindowMenu.h"

#include "support/base/Texts.h"

#include <QLayout>
#include <QMenuBar>

void addWindowMenu(QWidget& window, QAction& close, const std::function<void()>& showMainWindow) {
    auto* bar = new QMenuBar(&window);
    QMenu* menu = bar->addMenu(Texts::tr("&Window"));
    menu->setObjectName(QStringLiteral("windowMenu"));
    QAction* show = menu->addAction(Texts::tr("Show &Main Window"), &window, showMainWindow);
    show->setObjectName(QStringLiteral("showMainWindowAction"));
    menu->addSeparator();
    close.setText(Texts::tr("Close &Window"));
    menu->addAction(&close);
    window.layout()->setMenuBar(bar);
}
