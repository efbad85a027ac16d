#include "ui/preferences/FolderList.h"

#include "ui/widgets/ToolTip.h"

#include <QCoreApplication>
#include <QDir>
#include <QDrag>
#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QSignalBlocker>

namespace {

enum Column { kName, kFolder };
constexpr int kRowMargins = 8;
constexpr int kPathRole = Qt::UserRole;
constexpr QLatin1StringView kDragged("application/x-ravelin-folder");

/// Only a row of this process is dropped on the list.
QByteArray ownMark() {
    return QByteArray::number(QCoreApplication::applicationPid()) + ' ';
}

}  // namespace

FolderList::FolderList(QWidget* parent) : QTreeWidget(parent) {
    setColumnCount(2);
    setHeaderLabels({tr("Name"), tr("Folder")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setEditTriggers(EditKeyPressed | DoubleClicked);
    setDragDropMode(DragDrop);
    setTabKeyNavigation(false);
    header()->setSectionsMovable(false);
    header()->setSectionResizeMode(kName, QHeaderView::ResizeToContents);
    header()->setMaximumSectionSize(fontMetrics().averageCharWidth() * 24);
    header()->setHighlightSections(false);
    connect(this, &QTreeWidget::itemChanged, this, &FolderList::noteRename);
}

void FolderList::setFolders(const QList<Destinations::StoredFolder>& folders) {
    const QSignalBlocker quiet(this);
    const int before = selected();
    const QString path = before < 0 ? QString() : topLevelItem(before)->data(kName, kPathRole).toString();
    clear();
    for (const Destinations::StoredFolder& folder : folders) {
        auto* item = new QTreeWidgetItem(this);
        const QString shown = QDir::toNativeSeparators(folder.path);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled);
        // On the column that is stretched: the other one is as wide as its hints.
        item->setSizeHint(kFolder, {0, fontMetrics().height() + kRowMargins});
        item->setText(kName, folder.name);
        item->setText(kFolder, folder.problem.isEmpty() ? shown : tr("%1 – cannot be used now").arg(shown));
        item->setData(kName, kPathRole, folder.path);
        item->setToolTip(kName, plainToolTip(folder.name));
        item->setToolTip(kFolder, plainToolTip(folder.problem.isEmpty() ? shown : folder.problem));
    }
    const int row = rowOfPath(path);
    setCurrentItem(topLevelItem(row >= 0 ? row : qMin(before, topLevelItemCount() - 1)));
}

int FolderList::selected() const {
    const QList<QTreeWidgetItem*> items = selectedItems();
    return items.isEmpty() ? -1 : indexOfTopLevelItem(items.first());
}

int FolderList::rowOfPath(const QString& path) const {
    for (int row = 0; row < topLevelItemCount(); ++row) {
        if (!path.isEmpty() && topLevelItem(row)->data(kName, kPathRole).toString() == path) return row;
    }
    return -1;
}

void FolderList::editSelected() {
    if (const int row = selected(); row >= 0) editItem(topLevelItem(row), kName);
}

void FolderList::removeSelected() {
    if (const int row = selected(); row >= 0) Q_EMIT removed(row);
}

void FolderList::moveSelected(int by) {
    const int row = selected();
    const int to = qBound(0, row + by, topLevelItemCount() - 1);
    if (row >= 0 && to != row) Q_EMIT moved(row, to);
}

void FolderList::noteRename(const QTreeWidgetItem* item) {
    // The items are made anew then, and the editor still uses this one.
    QMetaObject::invokeMethod(
        this,
        [this, path = item->data(kName, kPathRole).toString(), name = item->text(kName)] {
            if (const int row = rowOfPath(path); row >= 0) Q_EMIT renamed(row, name);
        },
        Qt::QueuedConnection);
}

/// The name is edited, wherever in the row the user clicks.
bool FolderList::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
    return QTreeWidget::edit(index.siblingAtColumn(kName), trigger, event);
}

void FolderList::keyPressEvent(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (event->key() == Qt::Key_Delete && modifiers == Qt::NoModifier) {
        removeSelected();
    } else if (event->key() == Qt::Key_Up && modifiers == Qt::AltModifier) {
        moveSelected(-1);
    } else if (event->key() == Qt::Key_Down && modifiers == Qt::AltModifier) {
        moveSelected(+1);
    } else {
        QTreeWidget::keyPressEvent(event);
    }
}

void FolderList::startDrag(Qt::DropActions) {
    const int row = selected();
    if (row < 0) return;
    QTreeWidgetItem* item = topLevelItem(row);
    QMimeData* contents = mimeData({item});
    contents->setData(kDragged, ownMark() + item->data(kName, kPathRole).toString().toUtf8());
    auto* drag = new QDrag(this);
    drag->setMimeData(contents);
    drag->setPixmap(viewport()->grab(visualItemRect(item)));
    drag->exec(Qt::MoveAction);
}

int FolderList::draggedRow(const QMimeData& contents) const {
    const QByteArray dragged = contents.data(kDragged);
    return dragged.startsWith(ownMark()) ? rowOfPath(QString::fromUtf8(dragged.mid(ownMark().size()))) : -1;
}

void FolderList::dragEnterEvent(QDragEnterEvent* event) {
    if (draggedRow(*event->mimeData()) >= 0) QTreeWidget::dragEnterEvent(event);
}

void FolderList::dragMoveEvent(QDragMoveEvent* event) {
    if (draggedRow(*event->mimeData()) < 0) {
        event->ignore();
        return;
    }
    QTreeWidget::dragMoveEvent(event);  // Scrolls at the edges, and shows the place.
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void FolderList::dropEvent(QDropEvent* event) {
    const int row = draggedRow(*event->mimeData());
    stopAutoScroll();
    setState(NoState);
    viewport()->update();
    event->setAccepted(row >= 0);
    if (row < 0) return;
    event->setDropAction(Qt::MoveAction);
    const QPoint place = event->position().toPoint();
    const QModelIndex index = indexAt(place);
    int before = index.isValid() ? index.row() : topLevelItemCount();
    if (index.isValid() && place.y() > visualRect(index).center().y()) ++before;
    const int to = before > row ? before - 1 : before;
    if (to != row) Q_EMIT moved(row, to);
}
