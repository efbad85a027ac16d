#include "ui/widgets/DestinationComboBox.h"

#include "app/destinations/DestinationPopUp.h"

#include <QStandardItemModel>

namespace {

using Kind = DestinationItem::Kind;

bool isCommand(const DestinationItem& item) {
    return item.kind == Kind::Choose || item.kind == Kind::Clear;
}

}  // namespace

DestinationComboBox::DestinationComboBox(QWidget* parent) : ElidedComboBox(parent) {
    connect(this, &QComboBox::activated, this, &DestinationComboBox::choose);
}

void DestinationComboBox::setPopUp(DestinationPopUp* popUp) {
    if (m_popUp) m_popUp->disconnect(this);
    m_popUp = popUp;
    if (popUp) connect(popUp, &DestinationPopUp::changed, this, &DestinationComboBox::fill);
    fill();
}

void DestinationComboBox::fill() {
    clear();
    if (!m_popUp) return;
    for (const DestinationItem& item : m_popUp->items()) {
        if (item.kind == Kind::Separator)
            insertSeparator(count());
        else
            addItem(item.title);
    }
    setCommandsEnabled(false);
    showSelected();
}

void DestinationComboBox::showSelected() {
    const qsizetype selected = m_popUp ? m_popUp->selected() : -1;
    const bool isDestination = selected >= 0 && selected < count() &&
                               m_popUp->items()[selected].kind != Kind::Separator &&
                               !isCommand(m_popUp->items()[selected]);
    setCurrentIndex(isDestination ? static_cast<int>(selected) : -1);
}

// The arrow keys and the wheel move through the enabled items of the closed box; they must not select a
// command and open a panel.
void DestinationComboBox::setCommandsEnabled(bool enabled) {
    auto* items = qobject_cast<QStandardItemModel*>(model());
    if (!items || !m_popUp) return;
    for (int i = 0; i < count(); ++i) {
        if (isCommand(m_popUp->items()[i])) items->item(i)->setEnabled(enabled);
    }
}

void DestinationComboBox::showPopup() {
    setCommandsEnabled(true);
    ElidedComboBox::showPopup();
}

void DestinationComboBox::hidePopup() {
    ElidedComboBox::hidePopup();
    setCommandsEnabled(false);
}

void DestinationComboBox::choose(int index) {
    if (!m_popUp || index < 0 || index >= m_popUp->items().size()) return;
    const Kind kind = m_popUp->items()[index].kind;
    showSelected();  // A command is never shown as selected, and a destination is shown when the pop-up has
                     // selected it.
    switch (kind) {
        case Kind::Choose:
            Q_EMIT chooseRequested();
            break;
        case Kind::Clear:
            Q_EMIT clearRequested();
            break;
        case Kind::Separator:
            break;
        case Kind::Ask:
        case Kind::NextToSource:
        case Kind::Folder:
            Q_EMIT itemChosen(index);
            break;
    }
}
