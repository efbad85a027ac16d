#pragma once

#include <QObject>
#include <QTimer>

class JobListModel;
class QListView;
class QPushButton;

/// Keeps a row that is running in view, until the user scrolls away from it: then a button at the edge of the
/// list leads back. Does nothing on progress. Main thread only.
class RunningFollower : public QObject {
    Q_OBJECT

public:
    /// `list` must outlive this object.
    explicit RunningFollower(QListView& list);

    /// `model`, the one of the list, must outlive this object.
    void setModel(JobListModel* model);
    /// Brings the topmost running row into view, and follows from now on.
    void showRunning();
    /// The list was scrolled by the user.
    void noteScrolled();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void schedule() { m_timer.start(0); }
    void update();
    void placeButton(bool isAbove);

    QListView& m_list;
    JobListModel* m_model = nullptr;
    QPushButton* m_button;
    QTimer m_timer;  ///< Several changes, one look.
    bool m_isFollowing = true;
    bool m_wasScrolled = false;  ///< By the user, since the last look.
};
