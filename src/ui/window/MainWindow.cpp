#include "ui/window/MainWindow.h"

#include "app/AppDelegate.h"
#include "app/queue/JobTexts.h"
#include "convert/ConversionJob.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/store/Defaults.h"
#include "ui/help/HelpMenu.h"
#include "ui/look/Accessibility.h"
#include "ui/look/Icons.h"
#include "ui/preferences/PreferencesWindow.h"
#include "ui/widgets/ToolTip.h"
#include "ui/window/EndActionBar.h"
#include "ui/window/JobDrag.h"
#include "ui/window/JobListModel.h"
#include "ui/window/LastQueueBar.h"
#include "ui/window/Posters.h"
#include "ui/window/QueueSummary.h"
#include "ui/window/TotalProgress.h"
#include "ui/window/UndoBar.h"
#include "ui_MainWindow.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QToolButton>
#include <QWindow>

namespace {

constexpr QLatin1StringView kGeometryKey("MainWindowGeometry");

/// What is dropped into a sandbox: the paths beside it are those outside. Empty if it is not that.
QString transferKey(const QMimeData& data) {
    const QString format = QStringLiteral("application/vnd.portal.filetransfer");
    if (!sharedDesktop().isSandboxed() || !data.hasFormat(format)) return {};
    QByteArray key = data.data(format);
    if (key.endsWith('\0')) key.chop(1);
    return QString::fromUtf8(key);
}

QList<QUrl> urlsOf(const QMimeData& data) {
    const QString key = transferKey(data);
    if (key.isEmpty()) return data.urls();
    QList<QUrl> urls;
    for (const QString& path : sharedDesktop().transferredFiles(key))
        urls.append(QUrl::fromLocalFile(path));
    return urls;
}

QLabel* makeSummary(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setContentsMargins(8, 0, 16, 0);
    return label;
}

}  // namespace

MainWindow::MainWindow(AppDelegate& delegate)
    : m_delegate(delegate),
      m_ui(std::make_unique<Ui::MainWindow>()),
      m_model(std::make_unique<JobListModel>(delegate.queue())) {
    m_ui->setupUi(this);
    m_summary = makeSummary(this);
    m_ui->statusBar->addWidget(new TotalProgress(delegate.progress(), this));
    m_ui->statusBar->addPermanentWidget(m_summary);
    setUpActions();
    setUpToolBar();
    setUpBars();
    setUpUndo();
    setUpEndAction();
    m_ui->jobListView->setJobs(m_model.get(), &delegate.jobCommands());
    m_ui->addSheetView->setSheet(&delegate.addSheet(), &delegate.destinations());
    setUpPosters();
    const auto focusPage = [this] { m_ui->pages->currentWidget()->setFocus(); };
    connect(m_ui->addSheetView, &AddSheetView::focusReleased, this, focusPage);
    setUpDetails();
    setAcceptDrops(true);
    followQueue();
    connect(&delegate, &AppDelegate::mainWindowRequested, this, &MainWindow::bringToFront);
    connect(&delegate, &AppDelegate::preferenceRequested, this, [this](const QString& key) {
        openPreferences();
        m_preferences->showSetting(key);
    });
    connect(&delegate, &AppDelegate::statusMessage, this, &MainWindow::showStatus);
    restoreGeometryFromSettings();
    focusPage();
}

MainWindow::~MainWindow() = default;

void MainWindow::setUpActions() {
    m_ui->addAction->setIcon(symbolicIcon("add"));
    m_ui->cleanAction->setIcon(symbolicIcon("clean"));
    m_ui->preferencesAction->setIcon(symbolicIcon("preferences"));
    connect(m_ui->addAction, &QAction::triggered, &m_delegate, &AppDelegate::addClicked);
    connect(m_ui->emptyView, &EmptyView::addRequested, &m_delegate, &AppDelegate::addClicked);
    connect(m_ui->pauseContinueAction, &QAction::triggered, this,
            [this] { m_delegate.queue().pauseContinueClicked(true); });
    connect(m_ui->cleanAction, &QAction::triggered, &m_delegate.queue(), &JobQueue::cleanClicked);
    connect(m_ui->preferencesAction, &QAction::triggered, this, &MainWindow::openPreferences);
    connect(m_ui->closeAction, &QAction::triggered, this, &MainWindow::close);
    connect(m_ui->quitAction, &QAction::triggered, this, [this] { m_delegate.terminate(true); });
    connect(m_ui->selectAllAction, &QAction::triggered, this, [this] {
        m_ui->jobListView->selectAll();
        m_ui->jobListView->setFocus();
    });
    connect(m_ui->showRunningAction, &QAction::triggered, m_ui->jobListView, &JobListView::showRunning);
    connect(m_ui->queueMenu, &QMenu::aboutToShow, this, &MainWindow::fillQueueMenu);
    setUpHelpMenu(*m_ui->helpMenu, m_delegate, *this);
}

void MainWindow::setUpToolBar() {
    auto* space = new QWidget(this);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_ui->toolBar->addWidget(space);
    m_ui->toolBar->addAction(m_ui->preferencesAction);
    const QList<QToolButton*> buttons = m_ui->toolBar->findChildren<QToolButton*>();
    for (QToolButton* button : buttons) {
        if (button->defaultAction()) button->setFocusPolicy(Qt::TabFocus);
    }
}

void MainWindow::setUpBars() {
    auto* lastQueue = new LastQueueBar(this);
    addBar(lastQueue);
    lastQueue->setLastQueue(&m_delegate.lastQueue());
    addBar(new EndActionBar(m_delegate.endAction(), this));
}

void MainWindow::addBar(NoticeBar* bar) {
    m_ui->centralLayout->insertWidget(m_ui->centralLayout->indexOf(m_ui->splitter), bar);
    // In front of the list, as on the screen.
    setTabOrder(bar->otherButton(), m_ui->jobListView);
    connect(bar, &NoticeBar::focusReleased, this, [this] { m_ui->pages->currentWidget()->setFocus(); });
}

void MainWindow::setUpEndAction() {
    EndAction& endAction = m_delegate.endAction();
    auto* group = new QActionGroup(this);
    for (const auto& [action, kind] : {std::pair(m_ui->endNothingAction, EndAction::Kind::Nothing),
                                       std::pair(m_ui->endQuitAction, EndAction::Kind::Quit),
                                       std::pair(m_ui->endSleepAction, EndAction::Kind::Sleep),
                                       std::pair(m_ui->endShutDownAction, EndAction::Kind::ShutDown)}) {
        group->addAction(action);
        const auto refresh = [&endAction, action = action, kind = kind] {
            action->setChecked(endAction.kind() == kind);
            action->setEnabled(endAction.isAvailable(kind));
        };
        refresh();
        connect(&endAction, &EndAction::changed, action, refresh);
        connect(action, &QAction::triggered, &endAction,
                [&endAction, kind = kind] { endAction.choose(kind); });
    }
    connect(m_ui->queueMenu, &QMenu::aboutToShow, &endAction, &EndAction::askWhatIsAvailable);
    connect(&endAction, &EndAction::countdownStarted, this, [this] {
        if (!isVisible()) {
            // The user may be working in another window.
            setAttribute(Qt::WA_ShowWithoutActivating);
            show();
            setAttribute(Qt::WA_ShowWithoutActivating, false);
        }
        QApplication::alert(this);
    });
}

void MainWindow::setUpUndo() {
    Removals& removals = m_delegate.removals();
    connect(m_ui->undoAction, &QAction::triggered, &removals, &Removals::undo);
    const auto refresh = [this, &removals] { m_ui->undoAction->setEnabled(removals.isOffered()); };
    connect(&removals, &Removals::changed, this, refresh);
    refresh();
    // Qt's own description of a stack has its pages alone.
    accessibility::setRole(*m_ui->pages, QAccessible::LayeredPane);
    auto* bar = new UndoBar(removals, m_ui->pages);
    connect(bar, &UndoBar::focusReleased, this, [this] { m_ui->pages->currentWidget()->setFocus(); });
    setTabOrder(m_ui->jobListView, bar->undoButton());
}

void MainWindow::setUpPosters() {
    FileIntake& intake = m_delegate.intake();
    LastQueue& lastQueue = m_delegate.lastQueue();
    // No movie waits for its probe while a poster is taken.
    m_posters = new Posters(*m_ui->jobListView, [&intake, &lastQueue] {
        return intake.isScanning() || intake.isBatch() || lastQueue.isReturning();
    });
    m_posters->setModel(m_model.get());
    m_ui->addSheetView->setPosters(m_posters);
    m_model->setPosters([this](const ConversionJob& job) { return m_posters->poster(job); });
    connect(&intake, &FileIntake::scanningEnded, m_posters, &Posters::look);
    connect(&intake, &FileIntake::batchEnded, m_posters, &Posters::look);
    connect(&lastQueue, &LastQueue::changed, m_posters, &Posters::look);
    connect(&m_delegate, &AppDelegate::terminating, m_posters, &Posters::stop);
}

void MainWindow::followQueue() {
    const JobQueue& queue = m_delegate.queue();
    connect(&queue, &JobQueue::titleChanged, this, &MainWindow::refreshTitle);
    connect(&queue, &JobQueue::titleChanged, this, &MainWindow::refreshSummary);
    connect(&queue, &JobQueue::pausedChanged, this, &MainWindow::refreshPause);
    connect(&queue, &JobQueue::jobStateChanged, this, &MainWindow::announceState);
    connect(m_model.get(), &JobListModel::rowsInserted, this, &MainWindow::refreshPage);
    connect(m_model.get(), &JobListModel::rowsRemoved, this, &MainWindow::refreshPage);
    refreshTitle();
    refreshSummary();
    refreshPause();
    refreshPage();
}

void MainWindow::announceState(ConversionJob* job) {
    if (!QAccessible::isActive()) return;
    const QString note = jobNote(*job).verdictText();
    const QString state = note.isEmpty() ? jobStatus(*job) : note;
    accessibility::announce(*this, Texts::tr("%1: %2").arg(job->fileInfo().fileName, state));
}

void MainWindow::refreshTitle() {
    setWindowTitle(m_delegate.queue().windowTitle());
}

void MainWindow::refreshPause() {
    const bool isPaused = m_delegate.queue().isPaused();
    m_ui->pauseContinueAction->setText(isPaused ? Texts::tr("Resume Queue") : Texts::tr("Pause Queue"));
    m_ui->pauseContinueAction->setIcon(symbolicIcon(isPaused ? "toolbar_start" : "toolbar_pause"));
    m_ui->addSheetView->setAddButtonTitle(m_delegate.queue().addButtonTitle());
}

void MainWindow::refreshPage() {
    const bool isEmpty = m_model->rowCount() == 0;
    m_ui->selectAllAction->setEnabled(!isEmpty);
    if (isEmpty) closeDetails();
    m_ui->pages->setCurrentWidget(isEmpty ? static_cast<QWidget*>(m_ui->emptyView) : m_ui->jobListView);
}

void MainWindow::refreshSummary() {
    m_summary->setText(queueSummary(m_delegate.queue()));
    refreshCommands();
}

void MainWindow::refreshCommands() {
    m_ui->showRunningAction->setEnabled(!m_model->running().isEmpty());
    m_ui->pauseContinueAction->setToolTip(plainToolTip(m_delegate.queue().pauseHint()));
    m_ui->cleanAction->setEnabled(m_delegate.queue().jobCountWithState(JobState::Finished) > 0);
}

void MainWindow::showStatus(const QString& message) {
    constexpr int kMilliseconds = 15000;
    m_ui->statusBar->showMessage(message, kMilliseconds);
    accessibility::announce(*this, message);
}

void MainWindow::fillQueueMenu() {
    qDeleteAll(m_jobActions);
    const QList<QAction*> before = m_ui->queueMenu->actions();
    m_ui->jobListView->fillMenu(*m_ui->queueMenu);
    m_jobActions = m_ui->queueMenu->actions().mid(before.size());
}

void MainWindow::setUpDetails() {
    m_ui->splitter->setPaneOpen(false);
    connect(m_ui->jobListView, &JobListView::detailsRequested, this, &MainWindow::toggleDetails);
    connect(m_ui->detailsPane, &DetailsPane::closeRequested, this, &MainWindow::closeDetails);
    connect(m_ui->jobListView->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                const ConversionJob* job = m_model->job(current);
                if (job && m_ui->splitter->isPaneOpen()) m_ui->detailsPane->setJob(job);
            });
    m_closeDetails = new QAction(this);
    m_closeDetails->setShortcut(Qt::Key_Escape);
    m_closeDetails->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_closeDetails->setEnabled(false);
    connect(m_closeDetails, &QAction::triggered, this, &MainWindow::closeDetails);
    m_ui->splitter->addAction(m_closeDetails);
}

/// The pane follows the current row. Asked for once more, it closes, but not by the click that chose the row.
void MainWindow::toggleDetails(const ConversionJob* job, bool mayClose) {
    const QModelIndex row = m_model->indexOf(job);
    if (!row.isValid()) return;
    if (m_ui->splitter->isPaneOpen() && m_ui->detailsPane->job() == job) {
        if (mayClose) closeDetails();
        return;
    }
    if (m_ui->jobListView->currentIndex() != row) m_ui->jobListView->setCurrentIndex(row);
    const bool hadFocus = m_ui->jobListView->hasFocus();
    m_ui->detailsPane->setJob(job);
    m_ui->jobListView->setKeepsCurrentInView(true);
    m_ui->splitter->setPaneOpen(true);
    m_closeDetails->setEnabled(true);
    if (hadFocus && !m_ui->jobListView->isVisible()) m_ui->detailsPane->setFocus();
}

void MainWindow::closeDetails() {
    const QWidget* focused = focusWidget();
    const bool hadFocus = focused && m_ui->detailsPane->isAncestorOf(focused);
    m_ui->jobListView->setKeepsCurrentInView(false);
    m_ui->splitter->setPaneOpen(false);
    m_closeDetails->setEnabled(false);
    m_ui->detailsPane->setJob(nullptr);
    if (hadFocus) m_ui->pages->currentWidget()->setFocus();
}

void MainWindow::bringToFront(const QString& activationToken) {
    if (!activationToken.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void MainWindow::openPreferences() {
    if (!m_preferences) {
        m_preferences =
            std::make_unique<PreferencesWindow>(m_delegate.destinations(), m_delegate.watchFolder());
        connect(m_preferences.get(), &PreferencesWindow::closing, &m_delegate,
                &AppDelegate::preferencesWillClose);
        connect(m_preferences.get(), &PreferencesWindow::mainWindowRequested, &m_delegate,
                &AppDelegate::openMainWindow);
        Q_EMIT preferencesCreated(m_preferences.get());
    }
    m_preferences->show();
    m_preferences->raise();
    m_preferences->activateWindow();
}

void MainWindow::restoreGeometryFromSettings() {
    const QByteArray geometry = defaultObject(kGeometryKey).toByteArray();
    if (!geometry.isEmpty()) restoreGeometry(geometry);
}

bool MainWindow::event(QEvent* event) {
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::Paint && !std::exchange(m_wasPainted, true)) Q_EMIT painted();
    return handled;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    setDefaultObject(kGeometryKey, saveGeometry());
    event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (jobdrag::isOwn(*event->mimeData())) {
        event->ignore();
        return;
    }
    // The files of a transfer are handed over when they are dropped, once.
    const bool isAccepted =
        !transferKey(*event->mimeData()).isEmpty() || m_delegate.draggingEntered(event->mimeData()->urls());
    m_ui->emptyView->setDropHighlighted(isAccepted);
    if (!isAccepted) return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent*) {
    m_ui->emptyView->setDropHighlighted(false);
}

void MainWindow::dropEvent(QDropEvent* event) {
    m_ui->emptyView->setDropHighlighted(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    m_delegate.performDragOperation(urlsOf(*event->mimeData()));
}
