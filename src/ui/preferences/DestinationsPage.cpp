#include "ui/preferences/DestinationsPage.h"

#include "app/destinations/Destinations.h"
#include "ui/preferences/FolderList.h"
#include "ui/widgets/DestinationComboBox.h"

#include <QAbstractItemDelegate>
#include <QPushButton>

DestinationsPage::DestinationsPage(QWidget& page, Destinations& destinations)
    : QObject(&page), m_page(page), m_destinations(destinations), m_list(page.findChild<FolderList*>()) {
    DestinationPopUp& popUp = destinations.preferencesDestinationPopUp();
    auto* box = page.findChild<DestinationComboBox*>();
    box->setPopUp(&popUp);
    connect(&popUp, &DestinationPopUp::changed, this, &DestinationsPage::refresh);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &DestinationsPage::refreshButtons);
    connect(m_list->itemDelegate(), &QAbstractItemDelegate::closeEditor, this, &DestinationsPage::refresh,
            Qt::QueuedConnection);

    const auto choose = [&destinations] {
        destinations.chooseNewDestination(DestinationPopUp::Place::Preferences);
    };
    const auto forget = [&destinations] { destinations.forgetAll(); };
    connect(box, &DestinationComboBox::itemChosen, &destinations, &Destinations::setDefaultDestination);
    connect(box, &DestinationComboBox::chooseRequested, this, choose);
    connect(box, &DestinationComboBox::clearRequested, this, forget);
    connect(m_list, &FolderList::renamed, &destinations, &Destinations::renameFolder);
    connect(m_list, &FolderList::removed, &destinations, &Destinations::removeFolder);
    connect(m_list, &FolderList::moved, &destinations, &Destinations::moveFolder);

    const auto onClick = [this](const char* name, const auto& action) {
        connect(m_page.findChild<QPushButton*>(name), &QPushButton::clicked, this, action);
    };
    onClick("addFolder", choose);
    onClick("clearFolders", forget);
    onClick("renameFolder", [this] { m_list->editSelected(); });
    onClick("removeFolder", [this] { m_list->removeSelected(); });
    onClick("moveFolderUp", [this] { m_list->moveSelected(-1); });
    onClick("moveFolderDown", [this] { m_list->moveSelected(+1); });
    refresh();
}

void DestinationsPage::refresh() {
    if (m_list->isEditing()) return;  // Later, by what follows the editing.
    m_list->setFolders(m_destinations.storedFolders());
    refreshButtons();
}

void DestinationsPage::refreshButtons() {
    const int selected = m_list->selected();
    const int count = m_list->topLevelItemCount();
    const auto enable = [this](const char* name, bool isEnabled) {
        m_page.findChild<QPushButton*>(name)->setEnabled(isEnabled);
    };
    enable("clearFolders", count > 0);
    enable("renameFolder", selected >= 0);
    enable("removeFolder", selected >= 0);
    enable("moveFolderUp", selected > 0);
    enable("moveFolderDown", selected >= 0 && selected < count - 1);
}
