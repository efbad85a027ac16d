#include "ui/window/RunningFollower.h"

#include "ui/window/JobListModel.h"

#include <QApplication>
#include <QEvent>
#include <QListView>
#include <QPushButton>
#include <QScrollBar>

RunningFollower::RunningFollower(QListView& list)
    : QObject(&list), m_list(list), m_button(new QPushButton(tr("Show Running"), &list)) {
    m_button->setObjectName(QStringLiteral("showRunningButton"));
    m_button->setFocusPolicy(Qt::NoFocus);  // By key there is the command in the menu.
    m_button->hide();
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &RunningFollower::update);
    connect(m_button, &QPushButton::clicked, this, &RunningFollower::showRunning);
    connect(list.verticalScrollBar(), &QScrollBar::actionTriggered, this, &RunningFollower::noteScrolled);
    list.viewport()->installEventFilter(this);
}

void RunningFollower::setModel(JobListModel* model) {
    m_model = model;
    connect(model, &JobListModel::runningChanged, this, &RunningFollower::schedule);
    connect(model, &JobListModel::rowsInserted, this, &RunningFollower::schedule);
    connect(model, &JobListModel::layoutChanged, this, &RunningFollower::schedule);
    schedule();
}

bool RunningFollower::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show) schedule();
    return QObject::eventFilter(watched, event);
}

void RunningFollower::noteScrolled() {
    m_wasScrolled = true;
    schedule();
}

void RunningFollower::showRunning() {
    m_isFollowing = true;
    m_wasScrolled = false;
    update();
}

void RunningFollower::update() {
    if (!m_model || !m_list.isVisible()) return;
    QModelIndex top;
    bool isInView = false;
    const auto running = m_model->running();
    for (const QPersistentModelIndex& row : running) {
        const int middle = m_list.visualRect(row).center().y();
        isInView = isInView || (middle >= 0 && middle < m_list.viewport()->height());
        if (!top.isValid() || row.row() < top.row()) top = row;
    }
    if (std::exchange(m_wasScrolled, false) && top.isValid()) m_isFollowing = isInView;
    const bool isAway = top.isValid() && !isInView;
    m_button->setVisible(isAway && !m_isFollowing);
    if (!isAway) return;
    if (!m_isFollowing) {
        placeButton(m_list.visualRect(top).y() < 0);
    } else if (QApplication::mouseButtons() == Qt::NoButton && !QApplication::activePopupWidget()) {
        m_list.scrollTo(top, QAbstractItemView::PositionAtCenter);
    } else {
        // Nothing moves under the pointer of a user who is about to do something.
        constexpr int kMilliseconds = 300;
        m_timer.start(kMilliseconds);
    }
}

void RunningFollower::placeButton(bool isAbove) {
    constexpr int kMargin = 8;
    m_button->adjustSize();
    QRect place(QPoint(), m_button->size());
    const QRect area = m_list.viewport()->geometry();
    place.moveCenter(area.center());
    if (isAbove) {
        place.moveTop(area.top() + kMargin);
    } else {
        place.moveBottom(area.bottom() - kMargin);
    }
    m_button->setGeometry(place);
    m_button->raise();
}
