#pragma once

#include "app/destinations/Destinations.h"

#include <QTreeWidget>

/// The destination folders, to be renamed, removed and put into another order by keys, by the mouse and by
/// buttons elsewhere. It changes nothing itself: the receiver of a signal does, and calls setFolders(). Main
/// thread only.
class FolderList : public QTreeWidget {
    Q_OBJECT

public:
    explicit FolderList(QWidget* parent = nullptr);

    /// The same folder stays selected; if it is gone, the one in its place.
    void setFolders(const QList<Destinations::StoredFolder>& folders);
    /// The number of the selected folder; -1: none.
    int selected() const;
    /// A name is being edited, which setFolders() would end.
    bool isEditing() const { return state() == EditingState; }

    void editSelected();
    void removeSelected();
    /// By that many rows; negative: up.
    void moveSelected(int by);

Q_SIGNALS:
    /// From the event loop, when the editor is closed.
    void renamed(qsizetype number, const QString& name);
    void removed(qsizetype number);
    /// `to` is to be its number afterwards.
    void moved(qsizetype number, qsizetype to);

protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    int rowOfPath(const QString& path) const;
    int draggedRow(const QMimeData& contents) const;
    void noteRename(const QTreeWidgetItem* item);
};
