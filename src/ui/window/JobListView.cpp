#include "ui/window/JobListView.h"

#include "app/actions/FailureActions.h"
#include "convert/CommandLineText.h"
#include "convert/ConversionJob.h"
#include "support/base/Collections.h"
#include "support/base/Text.h"
#include "ui/look/Icons.h"
#include "ui/window/JobDelegate.h"
#include "ui/window/JobListModel.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QToolTip>

using jobrow::Button;

JobListView::JobListView(QWidget* parent) : QListView(parent), m_delegate(new JobDelegate(this)) {
    setItemDelegate(m_delegate);
    setUniformItemSizes(true);
    setFrameShape(QFrame::NoFrame);
    setMouseTracking(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(tr("Movies"));
}

void JobListView::setJobs(JobListModel* model, FailureActions* actions) {
    m_jobs = model;
    m_actions = actions;
    setModel(model);
}

ConversionJob* JobListView::currentJob() const {
    return m_jobs ? m_jobs->job(currentIndex()) : nullptr;
}

void JobListView::act(ConversionJob& job, Button button, bool shiftIsHeld) {
    if (!jobrow::isEnabled(button, job.state())) return;
    switch (button) {
        case Button::PauseContinue:
            if (statusIsRunning(job.state())) {
                job.pause();
            } else {
                job.continueJob();
            }
            return;
        case Button::Remove:
            job.remove();
            return;
        case Button::Reveal:
            m_actions->reveal(job, shiftIsHeld);
            return;
    }
}

void JobListView::trigger(Button button, bool shiftIsHeld) {
    if (ConversionJob* job = currentJob()) act(*job, button, shiftIsHeld);
}

/// What Return and a double click do.
void JobListView::open(bool shiftIsHeld) {
    const ConversionJob* job = currentJob();
    if (job && jobrow::isEnabled(Button::Reveal, job->state())) {
        trigger(Button::Reveal, shiftIsHeld);
    } else {
        showDetails();
    }
}

void JobListView::showDetails() {
    if (ConversionJob* job = currentJob()) Q_EMIT detailsRequested(job);
}

void JobListView::fillMenu(QMenu& menu) {
    ConversionJob* job = currentJob();
    const JobState state = job ? job->state() : JobState::Queued;
    // The shortcut is only displayed: the list handles the key itself, and the menu must not take it from
    // other controls.
    const auto addCommand = [&](const QString& title, const QKeySequence& key, Button button, bool shift) {
        QAction* action = menu.addAction(title + u'\t' + key.toString(QKeySequence::NativeText));
        action->setEnabled(job && jobrow::isEnabled(button, state));
        if (job) {
            connect(action, &QAction::triggered, job,
                    [this, job, button, shift] { act(*job, button, shift); });
        }
        return action;
    };
    const auto add = [&](Button button, const QKeySequence& key) {
        addCommand(JobDelegate::titleOf(button, state), key, button, false)
            ->setIcon(symbolicIcon(JobDelegate::iconOf(button, state)));
    };
    add(Button::PauseContinue, Qt::Key_Space);
    add(Button::Reveal, Qt::Key_Return);
    if (job && jobrow::isEnabled(Button::Reveal, state) && state != JobState::Failed) {
        addCommand(tr("Show the original movie"), Qt::SHIFT | Qt::Key_Return, Button::Reveal, true);
    }
    menu.addSeparator();
    QAction* details = menu.addAction(
        tr("Details…") + u'\t' + QKeySequence(Qt::ALT | Qt::Key_Return).toString(QKeySequence::NativeText));
    details->setEnabled(job);
    if (job) connect(details, &QAction::triggered, job, [this, job] { Q_EMIT detailsRequested(job); });
    const QStringList arguments = job ? job->arguments() : QStringList();
    QAction* copy = menu.addAction(tr("Copy command line"), this, [arguments] {
        QApplication::clipboard()->setText(commandLineText(arguments));
    });
    copy->setEnabled(collections::isNonEmptyCollection(arguments));
    menu.addSeparator();
    add(Button::Remove, Qt::Key_Delete);
}

std::optional<Button> JobListView::buttonAt(QPoint position, const QModelIndex& index) const {
    if (!index.isValid()) return std::nullopt;
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(index);
    return JobDelegate::layoutOf(option).buttonAt(position);
}

void JobListView::setHot(const QModelIndex& index, std::optional<Button> button, bool isPressed) {
    m_delegate->setHot(index, button, isPressed);
    if (index.isValid()) update(index);
}

void JobListView::mousePressEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    const auto button = buttonAt(event->position().toPoint(), index);
    QListView::mousePressEvent(event);
    if (event->button() != Qt::LeftButton || !button) return;
    m_pressedIndex = index;
    m_pressedButton = button;
    m_pressedJob = m_jobs->job(index);
    setHot(index, button, true);
}

void JobListView::mouseReleaseEvent(QMouseEvent* event) {
    QListView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton || !m_pressedButton) return;
    const QModelIndex index = indexAt(event->position().toPoint());
    const auto button = buttonAt(event->position().toPoint(), index);
    const bool isClick = index.isValid() && m_pressedIndex == index && m_pressedButton == button;
    m_pressedButton.reset();
    m_pressedIndex = QModelIndex();
    setHot(index, button, false);
    if (!isClick) return;
    if (ConversionJob* job = m_jobs->job(index))
        act(*job, *button, event->modifiers().testFlag(Qt::ShiftModifier));
}

void JobListView::mouseMoveEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    // Dragging across the rows does not select them.
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        QListView::mouseMoveEvent(event);
        setHot(index, buttonAt(event->position().toPoint(), index), false);
    }
}

void JobListView::mouseDoubleClickEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || !index.isValid()) return;
    if (buttonAt(event->position().toPoint(), index)) {
        // After a removal another job is under the pointer, which the user did not mean.
        if (m_jobs->job(index) == m_pressedJob) mousePressEvent(event);
    } else {
        open(event->modifiers().testFlag(Qt::ShiftModifier));
    }
}

void JobListView::leaveEvent(QEvent* event) {
    QListView::leaveEvent(event);
    setHot({}, std::nullopt, false);
    viewport()->update();
}

void JobListView::keyPressEvent(QKeyEvent* event) {
    const bool shiftIsHeld = event->modifiers().testFlag(Qt::ShiftModifier);
    static const QSet<int> commands = {Qt::Key_Space, Qt::Key_Delete, Qt::Key_Return, Qt::Key_Enter};
    // Auto-repeat must not act on each row that moves up.
    if (event->isAutoRepeat() && commands.contains(event->key())) return;
    switch (event->key()) {
        case Qt::Key_Space:
            trigger(Button::PauseContinue);
            return;
        case Qt::Key_Delete:
            trigger(Button::Remove);
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (event->modifiers().testFlag(Qt::AltModifier)) {
                showDetails();
            } else {
                open(shiftIsHeld);
            }
            return;
        default:
            QListView::keyPressEvent(event);
    }
}

void JobListView::contextMenuEvent(QContextMenuEvent* event) {
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    if (!byKey) setCurrentIndex(indexAt(event->pos()));
    if (!currentIndex().isValid()) return;
    QMenu menu(this);
    fillMenu(menu);
    menu.exec(byKey ? viewport()->mapToGlobal(visualRect(currentIndex()).center()) : event->globalPos());
}

void JobListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                              const QList<int>& roles) {
    // All rows always have the same height; QListView would lay out every row again.
    const QRect changed = visualRect(topLeft).united(visualRect(bottomRight)) & viewport()->rect();
    if (!changed.isEmpty()) viewport()->update(changed);
    if (!roles.isEmpty()) return;  // A progress update: no accessibility event.
    QAccessibleTableModelChangeEvent change(this, QAccessibleTableModelChangeEvent::DataChanged);
    change.setFirstRow(topLeft.row());
    change.setLastRow(bottomRight.row());
    QAccessible::updateAccessibility(&change);
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
    if (!button || !job || !jobrow::isEnabled(*button, job->state())) return false;
    QToolTip::showText(globalPosition, JobDelegate::titleOf(*button, job->state()), viewport());
    return true;
}
