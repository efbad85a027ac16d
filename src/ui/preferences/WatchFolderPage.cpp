#include "ui/preferences/WatchFolderPage.h"

#include "app/watching/WatchFolder.h"
#include "support/base/Texts.h"
#include "ui/widgets/ToolTip.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

void joinWatchFolder(QWidget& page, WatchFolder& watchFolder) {
    auto* label = page.findChild<QLabel*>("watchfolderLabel");
    auto* state = page.findChild<QLabel*>("watchfolderState");
    const auto show = [&watchFolder, label, state] {
        const QString& name = watchFolder.watchfolderLabel();
        label->setText(name.isEmpty() ? Texts::tr("No folder is chosen.") : name);
        label->setToolTip(plainToolTip(watchFolder.folder()));
        state->setText(watchFolder.stateText());
    };
    QObject::connect(&watchFolder, &WatchFolder::changed, &page, show);
    QObject::connect(page.findChild<QPushButton*>("watchfolderSet"), &QPushButton::clicked, &watchFolder,
                     &WatchFolder::watchfolderSetClicked);
    show();
}
