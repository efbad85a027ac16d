#pragma once

#include "app/actions/JobCommands.h"
#include "ui/window/JobRow.h"

#include <QListView>
#include <QPointer>
#include <QTimer>

class JobDelegate;
class JobListModel;
class QMenu;
class RunningFollower;

/// The list of jobs with its rows' buttons, keys, drags and context menu. Repaints only the rows that
/// changed. Keys and menus concern all selected rows, a row's buttons that row alone. Main thread only.
class JobListView : public QListView {
    Q_OBJECT

public:
    explicit JobListView(QWidget* parent = nullptr);

    /// Both must outlive the view.
    void setJobs(JobListModel* model, JobCommands* commands);

    /// Adds the commands of the selected jobs to `menu`. They keep referring to these jobs, also when one has
    /// left the list.
    void fillMenu(QMenu& menu);
    /// Whether the current row stays in view when the list becomes smaller.
    void setKeepsCurrentInView(bool keeps) { m_keepsCurrentInView = keeps; }
    /// Brings a running row into view, and keeps one there until the user scrolls.
    void showRunning();
    /// What a click on the row's button does.
    void pressButton(const QModelIndex& index, jobrow::Button button, bool shiftIsHeld = false);
    /// Opens the menu of the selected rows at this one, which comes into view. The row is selected alone
    /// unless it is one of them.
    void showMenu(const QModelIndex& index);

Q_SIGNALS:
    /// `wasCurrent`: the row was not chosen by the same click.
    void detailsRequested(ConversionJob* job, bool wasCurrent = true);

protected:
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;

private:
    ConversionJob* currentJob() const;
    JobCommands::Jobs selectedJobs() const;
    void choose(const QModelIndex& index);
    QStyleOptionViewItem optionOf(const QModelIndex& index) const;
    std::optional<jobrow::Button> buttonAt(QPoint position, const QModelIndex& index) const;
    bool isNoteAt(QPoint position, const QModelIndex& index) const;
    void refreshHot(QPoint position, bool isPressed);
    bool showToolTip(QPoint position, QPoint globalPosition);
    void perform(JobCommands::Command command);
    bool performKey(const QKeyEvent& event);
    void showFile(bool shiftIsHeld);
    void showDetails();
    void requestDetails(ConversionJob* job);
    void openMenu(QPoint globalPosition);
    void onRowsRemoved();
    void dragSelected();
    int dropRowAt(QPoint position) const;
    void setDropRow(int row);

    JobListModel* m_jobs = nullptr;
    JobCommands* m_commands = nullptr;
    JobDelegate* m_delegate = nullptr;
    RunningFollower* m_follower = nullptr;
    QPersistentModelIndex m_pressedIndex;
    std::optional<jobrow::Button> m_pressedButton;
    /// The current row when the button of the mouse was pressed; empty: it is not.
    std::optional<QPersistentModelIndex> m_currentBeforePress;
    /// The job of the last press, for the second press of a double click and for a drag.
    QPointer<ConversionJob> m_pressedJob;
    std::optional<QPoint> m_dragStart;  ///< A press that becomes a drag when the pointer moves.
    std::optional<QPoint>
        m_notePress;     ///< The same on a row's note, which shows the details if it is a click.
    int m_dropRow = -1;  ///< The row in front of which dragged ones would be dropped; -1: none.
    bool m_keepsCurrentInView = false;
    QTimer m_rowsMoved;           ///< What is under a pointer at rest may be another row.
    bool m_hadSelection = false;  ///< Before the removal of rows.
};
