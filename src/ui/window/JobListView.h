#pragma once

#include "ui/window/JobRow.h"

#include <QListView>
#include <QPointer>

class ConversionJob;
class FailureActions;
class JobDelegate;
class JobListModel;
class QMenu;

/// The list of jobs with its rows' buttons, keys and context menu. Repaints only the rows that changed. Main
/// thread only.
class JobListView : public QListView {
    Q_OBJECT

public:
    explicit JobListView(QWidget* parent = nullptr);

    /// Both must outlive the view.
    void setJobs(JobListModel* model, FailureActions* actions);

    /// Performs the action of that button for the current job; does nothing if it is not enabled.
    void trigger(jobrow::Button button, bool shiftIsHeld = false);
    /// Adds the commands of the current job to `menu`. They keep referring to that job, also when it has left
    /// the list.
    void fillMenu(QMenu& menu);

Q_SIGNALS:
    void detailsRequested(ConversionJob* job);

protected:
    bool viewportEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;

private:
    ConversionJob* currentJob() const;
    std::optional<jobrow::Button> buttonAt(QPoint position, const QModelIndex& index) const;
    void setHot(const QModelIndex& index, std::optional<jobrow::Button> button, bool isPressed);
    bool showToolTip(QPoint position, QPoint globalPosition);
    void open(bool shiftIsHeld);
    void showDetails();
    void act(ConversionJob& job, jobrow::Button button, bool shiftIsHeld);

    JobListModel* m_jobs = nullptr;
    FailureActions* m_actions = nullptr;
    JobDelegate* m_delegate = nullptr;
    QPersistentModelIndex m_pressedIndex;
    std::optional<jobrow::Button> m_pressedButton;
    /// The job of the last press, for the second press of a double click.
    QPointer<ConversionJob> m_pressedJob;
};
