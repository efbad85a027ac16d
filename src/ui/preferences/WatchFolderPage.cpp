#include "ui/preferences/WatchFolderPage.h"

#include "app/watching/WatchFolder.h"
#include "settings/Settings.h"
#include "support/base/Texts.h"
#include "ui/widgets/ElidedLabel.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>

void joinWatchFolder(QWidget& page, WatchFolder& watchFolder) {
    auto* label = page.findChild<QLabel*>("watchfolderLabel");
    auto* path = page.findChild<ElidedLabel*>("watchfolderPath");
    auto* active = page.findChild<QCheckBox*>("watchfolderActive");
    auto* state = page.findChild<QLabel*>("watchfolderState");
    path->setTone(colors::Tone::Secondary);
    const auto show = [&watchFolder, label, path, active, state] {
        const QString& name = watchFolder.watchfolderLabel();
        label->setText(name.isEmpty() ? Texts::tr("No folder is chosen.") : name);
        path->setText(QDir::toNativeSeparators(watchFolder.folder()));
        path->setVisible(!watchFolder.folder().isEmpty());
        // What is on can be turned off.
        active->setEnabled(watchFolder.isChosen() || settings::WatchfolderActive.value());
        state->setText(watchFolder.stateText());
    };
    QObject::connect(&watchFolder, &WatchFolder::changed, &page, show);
    settings::WatchfolderActive.onChange(&page, show);
    QObject::connect(page.findChild<QPushButton*>("watchfolderSet"), &QPushButton::clicked, &watchFolder,
                     &WatchFolder::watchfolderSetClicked);
    show();
}
