#include "ui/window/JobListView.h"

#include "convert/ConversionJob.h"
#include "ui/window/JobDelegate.h"
#include "ui/window/JobDrag.h"
#include "ui/window/JobListAccessible.h"
#include "ui/window/JobListModel.h"
#include "ui/window/JobMenu.h"
#include "ui/window/RunningFollower.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHelpEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScopeGuard>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <utility>

using jobrow::Button;
using Command = JobCommands::Command;

JobListView::JobListView(QWidget* parent)
    : QListView(parent), m_delegate(new JobDelegate(this)), m_follower(new RunningFollower(*this)) {
    setItemDelegate(m_delegate);
    setUniformItemSizes(true);
    setFrameShape(QFrame::NoFrame);
    setMouseTracking(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionRectVisible(true);
    setAcceptDrops(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    joblist::installAccessible();
    constexpr int kMilliseconds = 50;
    m_rowsMoved.setSingleShot(true);
    m_rowsMoved.setInterval(kMilliseconds);
}

void JobListView::setJobs(JobListModel* model, JobCommands* commands) {
    m_jobs = model;
    m_commands = commands;
    setModel(model);
    setAccessibleName(tr("Movies"));
    m_follower->setModel(model);
    connect(model, &JobListModel::rowsRemoved, this, &JobListView::onRowsRemoved);
    // Once for many: to know what is under a pointer at rest, all rows are laid out.
    connect(&m_rowsMoved, &QTimer::timeout, this, [this] {
        if (viewport()->underMouse()) refreshHot(viewport()->mapFromGlobal(QCursor::pos()), false);
    });
    const auto follow = [this] { m_rowsMoved.start(); };
    connect(model, &JobListModel::rowsInserted, this, follow);
    connect(model, &JobListModel::rowsRemoved, this, follow);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, follow);
    connect(commands, &JobCommands::copied, this,
            [](const QString& text) { QApplication::clipboard()->setText(text); });
}

ConversionJob* JobListView::currentJob() const {
    return m_jobs ? m_jobs->job(currentIndex()) : nullptr;
}

JobCommands::Jobs JobListView::selectedJobs() const {
    QModelIndexList rows = selectedIndexes();
    std::ranges::sort(rows, {}, &QModelIndex::row);
    JobCommands::Jobs jobs;
    for (const QModelIndex& row : rows)
        jobs.append(m_jobs->job(row));
    return jobs;
}

/// Selects the row alone if it is not selected.
void JobListView::choose(const QModelIndex& index) {
    const bool isSelected = selectionModel()->isSelected(index);
    selectionModel()->setCurrentIndex(
        index, isSelected ? QItemSelectionModel::NoUpdate : QItemSelectionModel::ClearAndSelect);
}

void JobListView::pressButton(const QModelIndex& index, Button button, bool shiftIsHeld) {
    ConversionJob* job = m_jobs->job(index);
    if (!job) return;
    const JobCommands::Jobs one{job};
    switch (button) {
        case Button::PauseContinue:
            m_commands->perform(JobCommands::pauseOrContinue(one), one);
            return;
        case Button::Remove:
            m_commands->perform(Command::Remove, one);
            return;
        case Button::Reveal:
            m_commands->perform(shiftIsHeld ? Command::ShowOriginal : Command::Show, one);
            return;
        case Button::Explain:
            m_commands->perform(Command::Show, one);
            return;
        case Button::TryAgain:
            m_commands->perform(Command::TryAgain, one);
            return;
        case Button::More: {
            const QRect place = JobDelegate::layoutOf(optionOf(index), index).rectOf(button);
            selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
            openMenu(viewport()->mapToGlobal(place.bottomLeft()));
            return;
        }
    }
}

void JobListView::perform(Command command) {
    m_commands->perform(command, selectedJobs());
}

/// A double click does it, too, where there is nothing to play.
void JobListView::showFile(bool shiftIsHeld) {
    const JobCommands::Jobs jobs = selectedJobs();
    for (const Command command : {Command::ShowOriginal, Command::Show}) {
        if (command == Command::ShowOriginal && !shiftIsHeld) continue;
        if (JobCommands::fitting(command, jobs).isEmpty()) continue;
        m_commands->perform(command, jobs);
        return;
    }
    showDetails();
}

void JobListView::showDetails() {
    if (ConversionJob* job = currentJob()) requestDetails(job);
}

void JobListView::requestDetails(ConversionJob* job) {
    const bool wasCurrent = !m_currentBeforePress || m_jobs->job(*m_currentBeforePress) == job;
    Q_EMIT detailsRequested(job, wasCurrent);
}

void JobListView::resizeEvent(QResizeEvent* event) {
    const QRect before(QPoint(), event->oldSize());
    const bool wasInView = before.contains(visualRect(currentIndex()).center());
    QListView::resizeEvent(event);
    if (!m_keepsCurrentInView || !wasInView) return;
    const int scrolled = verticalScrollBar()->value();
    scrollTo(currentIndex());
    if (verticalScrollBar()->value() != scrolled) m_follower->noteScrolled();
}

void JobListView::showRunning() {
    m_follower->showRunning();
}

void JobListView::fillMenu(QMenu& menu) {
    jobmenu::fill(menu, *m_commands, selectedJobs(), currentJob(),
                  [this](ConversionJob* job) { requestDetails(job); });
}

QStyleOptionViewItem JobListView::optionOf(const QModelIndex& index) const {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(index);
    return option;
}

std::optional<Button> JobListView::buttonAt(QPoint position, const QModelIndex& index) const {
    if (!index.isValid()) return std::nullopt;
    return JobDelegate::layoutOf(optionOf(index), index).buttonAt(position);
}

bool JobListView::isNoteAt(QPoint position, const QModelIndex& index) const {
    return index.isValid() && JobDelegate::noteOf(optionOf(index), index).contains(position);
}

void JobListView::refreshHot(QPoint position, bool isPressed) {
    const QModelIndex index = indexAt(position);
    const bool isNote = isNoteAt(position, index);
    m_delegate->setHot({index, buttonAt(position, index), isNote, isPressed});
    isNote ? viewport()->setCursor(Qt::PointingHandCursor) : viewport()->unsetCursor();
    if (index.isValid()) update(index);
}

void JobListView::mousePressEvent(QMouseEvent* event) {
    m_currentBeforePress = currentIndex();
    const QPoint position = event->position().toPoint();
    const QModelIndex index = indexAt(position);
    const bool isLeft = event->button() == Qt::LeftButton;
    m_pressedJob = m_jobs->job(index);
    m_pressedButton = isLeft ? buttonAt(position, index) : std::nullopt;
    m_dragStart.reset();
    m_notePress.reset();
    if (m_pressedButton) {
        m_pressedIndex = index;
        choose(index);
        refreshHot(position, true);
        return;
    }
    if (isLeft && event->modifiers() == Qt::NoModifier && isNoteAt(position, index)) m_notePress = position;
    // With a modifier, on other rows and below the rows a drag selects.
    const bool isMovable = m_pressedJob && (m_pressedJob->state() == JobState::Queued ||
                                            m_pressedJob->state() == JobState::Finished);
    if (isLeft && isMovable && event->modifiers() == Qt::NoModifier) m_dragStart = position;
    QListView::mousePressEvent(event);
}

void JobListView::mouseReleaseEvent(QMouseEvent* event) {
    const auto atTheEnd = qScopeGuard([this] { m_currentBeforePress.reset(); });
    m_dragStart.reset();
    const QPoint position = event->position().toPoint();
    if (event->button() != Qt::LeftButton || !m_pressedButton) {
        if (state() == DragSelectingState) m_follower->noteScrolled();  // At an edge it scrolls.
        QListView::mouseReleaseEvent(event);
        const auto press = std::exchange(m_notePress, std::nullopt);
        const bool isClick =
            press && (position - *press).manhattanLength() < QApplication::startDragDistance();
        if (isClick && m_pressedJob && currentJob() == m_pressedJob) showDetails();
        return;
    }
    const QModelIndex index = indexAt(position);
    const auto button = buttonAt(position, index);
    const bool isClick = index.isValid() && m_pressedIndex == index && m_pressedButton == button;
    m_pressedButton.reset();
    m_pressedIndex = QModelIndex();
    refreshHot(position, false);
    if (isClick) pressButton(index, *button, event->modifiers().testFlag(Qt::ShiftModifier));
}

void JobListView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint position = event->position().toPoint();
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        QListView::mouseMoveEvent(event);
        refreshHot(position, false);
    } else if (m_dragStart) {
        if ((position - *m_dragStart).manhattanLength() >= QApplication::startDragDistance()) dragSelected();
    } else if (!m_pressedButton) {
        QListView::mouseMoveEvent(event);
    }
}

void JobListView::mouseDoubleClickEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || !index.isValid()) return;
    // What the first click has opened stays open.
    m_currentBeforePress = QPersistentModelIndex();
    if (buttonAt(event->position().toPoint(), index)) {
        // After a removal another job is under the pointer, which the user did not mean.
        if (m_jobs->job(index) == m_pressedJob) mousePressEvent(event);
        return;
    }
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    const bool shiftIsHeld = event->modifiers().testFlag(Qt::ShiftModifier);
    if (currentJob()->state() == JobState::Finished && !shiftIsHeld) {
        perform(Command::Play);
    } else {
        showFile(shiftIsHeld);
    }
}

void JobListView::leaveEvent(QEvent* event) {
    QListView::leaveEvent(event);
    m_delegate->setHot({});
    viewport()->unsetCursor();
    viewport()->update();
}

/// False: the key is none of the rows' commands.
bool JobListView::performKey(const QKeyEvent& event) {
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool shiftIsHeld = modifiers.testFlag(Qt::ShiftModifier);
    const bool isFile = shiftIsHeld || modifiers.testFlag(Qt::ControlModifier);
    // Auto-repeat must not act on each row that moves up.
    const auto once = [&](const auto& action) {
        if (!event.isAutoRepeat()) action();
        return true;
    };
    switch (event.key()) {
        case Qt::Key_Space:
            if (modifiers.testFlag(Qt::ControlModifier)) return false;  // Selects the row, too.
            return once([&] { perform(JobCommands::pauseOrContinue(selectedJobs())); });
        case Qt::Key_Delete:
            return once([&] { perform(Command::Remove); });
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return once([&] { isFile ? showFile(shiftIsHeld) : showDetails(); });
        case Qt::Key_P:
            if (modifiers != Qt::ControlModifier) return false;
            return once([&] { perform(Command::Play); });
        case Qt::Key_Home:
        case Qt::Key_Up:
        case Qt::Key_Down:
            if (modifiers != Qt::AltModifier) return false;
            perform(event.key() == Qt::Key_Home ? Command::StartNext
                    : event.key() == Qt::Key_Up ? Command::MoveUp
                                                : Command::MoveDown);
            scrollTo(currentIndex());
            return true;
        case Qt::Key_F10:
            if (modifiers != Qt::ShiftModifier) return false;
            if (currentIndex().isValid()) showMenu(currentIndex());
            return true;
        default:
            return false;
    }
}

void JobListView::keyPressEvent(QKeyEvent* event) {
    window()->setAttribute(Qt::WA_KeyboardFocusChange);  // The current row's frame, as Tab does it.
    const int before = verticalScrollBar()->value();
    if (!performKey(*event)) QListView::keyPressEvent(event);
    if (verticalScrollBar()->value() != before) m_follower->noteScrolled();
}

void JobListView::contextMenuEvent(QContextMenuEvent* event) {
    const auto atTheEnd = qScopeGuard([this] { m_currentBeforePress.reset(); });
    if (event->reason() == QContextMenuEvent::Keyboard) {
        if (currentIndex().isValid()) showMenu(currentIndex());
        return;
    }
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid()) {
        setCurrentIndex(index);
        return;
    }
    choose(index);
    openMenu(event->globalPos());
}

void JobListView::showMenu(const QModelIndex& index) {
    if (index != currentIndex() || !selectionModel()->hasSelection()) choose(index);
    const int before = verticalScrollBar()->value();
    scrollTo(index);
    if (verticalScrollBar()->value() != before) m_follower->noteScrolled();
    openMenu(viewport()->mapToGlobal(visualRect(index).center()));
}

void JobListView::openMenu(QPoint globalPosition) {
    QMenu menu(this);
    fillMenu(menu);
    menu.exec(globalPosition);
}

void JobListView::dragSelected() {
    m_dragStart.reset();
    m_notePress.reset();
    m_currentBeforePress.reset();  // No release follows.
    if (!m_pressedJob) return;
    QList<ConversionJob*> jobs;
    const JobCommands::Jobs selected = selectedJobs();
    for (ConversionJob* job : selected) {
        if (job->state() == m_pressedJob->state()) jobs.append(job);
    }
    auto contents = jobdrag::dataOf(jobs);
    if (!contents) return;
    const auto action = contents->hasUrls() ? Qt::CopyAction : Qt::MoveAction;
    auto* drag = new QDrag(this);
    drag->setPixmap(jobdrag::picture(jobs, *this));
    drag->setMimeData(contents.release());
    const QPointer self(this);
    const int before = verticalScrollBar()->value();
    drag->exec(action, action);
    if (!self) return;
    setDropRow(-1);
    setState(NoState);
    if (verticalScrollBar()->value() != before) m_follower->noteScrolled();
}

/// Rows that wait are dropped among each other: the nearest place beside one; -1: there is none.
int JobListView::dropRowAt(QPoint position) const {
    const int count = m_jobs->rowCount();
    const QModelIndex index = indexAt(position);
    const bool isLowerHalf = index.isValid() && position.y() > visualRect(index).center().y();
    const int row = index.isValid() ? index.row() + (isLowerHalf ? 1 : 0) : count;
    const auto waits = [&](int each) {
        return each >= 0 && each < count && m_jobs->job(m_jobs->index(each))->state() == JobState::Queued;
    };
    for (int distance = 0; distance <= count; ++distance) {
        if (waits(row + distance) || waits(row + distance - 1)) return row + distance;
        if (waits(row - distance - 1) || waits(row - distance)) return row - distance;
    }
    return -1;
}

void JobListView::setDropRow(int row) {
    m_dropRow = row;
    viewport()->update();
}

void JobListView::dragEnterEvent(QDragEnterEvent* event) {
    dragMoveEvent(event);
}

void JobListView::dragMoveEvent(QDragMoveEvent* event) {
    if (!jobdrag::isMove(*event->mimeData())) {
        event->ignore();  // It is for the window.
        return;
    }
    QListView::dragMoveEvent(event);  // Scrolls at the edges.
    setDropRow(dropRowAt(event->position().toPoint()));
    event->setDropAction(Qt::MoveAction);
    event->setAccepted(m_dropRow >= 0);
}

void JobListView::dragLeaveEvent(QDragLeaveEvent* event) {
    QListView::dragLeaveEvent(event);
    setDropRow(-1);
}

void JobListView::dropEvent(QDropEvent* event) {
    stopAutoScroll();
    const int row = jobdrag::isMove(*event->mimeData()) ? dropRowAt(event->position().toPoint()) : -1;
    event->setAccepted(row >= 0);
    if (row < 0) return;
    event->setDropAction(Qt::MoveAction);
    setDropRow(-1);
    m_commands->move(jobdrag::jobsOf(*event->mimeData(), *m_jobs), row);
}

void JobListView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (m_dropRow < 0) return;
    constexpr int kThickness = 2;
    const int count = m_jobs->rowCount();
    const QRect last = visualRect(m_jobs->index(count - 1));
    const int y = m_dropRow < count ? visualRect(m_jobs->index(m_dropRow)).top() : last.bottom() + 1;
    QPainter painter(viewport());
    painter.fillRect(QRect(0, qMax(0, y - kThickness), viewport()->width(), 2 * kThickness - 1),
                     palette().color(QPalette::Highlight));
}

void JobListView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) {
    m_hadSelection = selectionModel()->hasSelection();
    const int current = currentIndex().row();
    if (current >= start && current <= end) {
        // The next one takes its place, so that there is nothing to scroll to.
        const int next = end + 1 < m_jobs->rowCount() ? end + 1 : start - 1;
        setAutoScroll(false);
        selectionModel()->setCurrentIndex(m_jobs->index(next), QItemSelectionModel::NoUpdate);
        setAutoScroll(true);
    }
    QListView::rowsAboutToBeRemoved(parent, start, end);
}

void JobListView::onRowsRemoved() {
    if (m_hadSelection && !selectionModel()->hasSelection() && currentIndex().isValid())
        selectionModel()->select(currentIndex(), QItemSelectionModel::Select);
}

void JobListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                              const QList<int>& roles) {
    // All rows always have the same height; QListView would lay out every row again.
    const QRect changed = visualRect(topLeft).united(visualRect(bottomRight)) & viewport()->rect();
    if (!changed.isEmpty()) viewport()->update(changed);
    joblist::reportChange(*this, topLeft, bottomRight, roles);
}

bool JobListView::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QListView::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    return showToolTip(help->pos(), help->globalPos()) || QListView::viewportEvent(event);
}

bool JobListView::showToolTip(QPoint position, QPoint globalPosition) {
    const QModelIndex index = indexAt(position);
    const auto button = buttonAt(position, index);
    const ConversionJob* job = m_jobs ? m_jobs->job(index) : nullptr;
    if (!button || !job || !jobrow::textOf(*button).isEmpty()) return false;
    QToolTip::showText(globalPosition, JobDelegate::titleOf(*button, job->state()), viewport());
    return true;
}
