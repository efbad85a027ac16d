#include "app/AppDelegate.h"

#include "app/actions/JobMessages.h"
#include "app/intake/DroppedFiles.h"
#include "app/intake/MovieFiles.h"
#include "app/queue/Usages.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "settings/SettingsTable.h"
#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/alerts/SaveSettings.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Collections.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/relocation/PXAppMovedHandler.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"
#include "tool/ToolReaper.h"

#include <QFileInfo>
#include <QPointer>
#include <QScopedValueRollback>
#include <QTimer>

#include <algorithm>

namespace {

bool isFolder(const QString& path) {
    return QFileInfo(path).isDir();
}

QList<QUrl> urlsOf(const QStringList& paths) {
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    return urls;
}

}  // namespace

void AppDelegate::initialize() {
    settings::registerDefaults();
}

AppDelegate::AppDelegate(FilePanels& panels, QObject* parent)
    : PXApplicationDelegate(parent),
      m_panels(panels),
      m_intake(FileIntake::Messages::Scheduled),
      m_queue(m_intake),
      m_destinations(panels),
      m_removals(m_queue, m_intake),
      m_addSheet(m_intake, m_queue, m_removals, m_destinations, panels),
      m_failureActions(m_queue, panels),
      m_jobCommands(m_queue, m_failureActions),
      m_progress(m_queue),
      m_outcome(m_queue),
      m_store(m_queue, m_intake),
      m_lastQueue(m_store, m_queue, m_intake),
      m_endAction(m_queue, [this] { return isMoreComing(); }),
      m_watchFolder(panels),
      m_openWindows(m_queue, [this] { return work(); }) {
    // The last file may have been skipped while added jobs waited for it.
    connect(&m_intake, &FileIntake::becameIdle, &m_queue, &JobQueue::startPostponed);
    connect(&m_queue, &JobQueue::jobEnded, this,
            [](const ConversionJob* job) { jobmessages::showEnding(*job); });
    m_queue.setUsageCounter(
        [this](bool increase, bool allowFeedbackNow) { increaseUsages(*this, increase, allowFeedbackNow); });
    connect(&m_failureActions, &FailureActions::preferenceRequested, this, &AppDelegate::preferenceRequested);
    connect(&m_jobCommands, &JobCommands::message, this, &AppDelegate::statusMessage);
    connect(&m_addSheet, &AddSheet::message, this, &AppDelegate::statusMessage);
    connect(&m_destinations, &Destinations::message, this, &AppDelegate::statusMessage);
    connect(&m_queue, &JobQueue::quitRequested, this, &AppDelegate::quitWhenDone);
    connect(&m_intake, &FileIntake::batchEnded, this, [this] {
        if (std::exchange(m_quitIsDue, false) && m_queue.isIdle() && m_intake.importFiles().isEmpty())
            quitWhenDone();
    });
    connectEndAction();
    connectWindows();
    // A window that is not painted yet may get movies, too, as from the watch folder.
    connect(&m_queue, &JobQueue::jobAdded, this, &AppDelegate::openStore);
    connect(&m_intake, &FileIntake::filesWaitingChanged, this, &AppDelegate::openStore);
    connect(&m_store, &QueueStore::problem, this, &AppDelegate::statusMessage);
    connect(&m_lastQueue, &LastQueue::message, this, &AppDelegate::statusMessage);
    connect(&m_lastQueue, &LastQueue::filesReturned, this, &AppDelegate::openFiles);
    connect(&m_failureActions, &FailureActions::probeRequested, &m_lastQueue, &LastQueue::probeAgain);
    connect(&m_progress, &QueueProgress::changed, this,
            [this] { sharedDesktop().setLauncherProgress(m_progress.fraction()); });
    connect(&m_outcome, &QueueOutcome::summedUp, &m_outcome, &jobmessages::notifyOfEnd);
    const auto countBatch = [this] { m_progress.setComing(m_intake.batchCount()); };
    connect(&m_intake, &FileIntake::scanningStarted, this, countBatch);
    connect(&m_intake, &FileIntake::filesWaitingChanged, this, countBatch);
    connect(&m_intake, &FileIntake::batchEnded, this, countBatch);
    connect(&m_watchFolder, &WatchFolder::arrived, this, &AppDelegate::takeArrival);
    connect(&m_watchFolder, &WatchFolder::message, this, &AppDelegate::statusMessage);
    connect(&ToolReaper::shared(), &ToolReaper::becameIdle, this, &AppDelegate::announceTerminated);
}

AppDelegate::~AppDelegate() {
    *m_isStopped = true;
}

void AppDelegate::connectEndAction() {
    connect(&m_endAction, &EndAction::quitRequested, this, [this] { terminate(true); });
    connect(&m_endAction, &EndAction::message, this, &AppDelegate::statusMessage);
    connect(this, &AppDelegate::terminating, &m_endAction, &EndAction::cancel);
    connect(&m_intake, &FileIntake::filesWaitingChanged, &m_endAction, &EndAction::reconsider);
    connect(&m_intake, &FileIntake::scanningStarted, &m_endAction, &EndAction::reconsider);
    connect(&m_intake, &FileIntake::becameIdle, &m_endAction, &EndAction::reconsider);
    connect(&m_lastQueue, &LastQueue::changed, &m_endAction, &EndAction::reconsider);
}

void AppDelegate::connectWindows() {
    m_addSheet.setMayAsk([this] { return m_openWindows.isMainOpen(); });
    connect(&m_openWindows, &OpenWindows::wentOn, this, [this](bool isConverting) {
        if (!m_terminates) jobmessages::notifyOfClosedWindow(isConverting);
    });
    connect(&m_openWindows, &OpenWindows::settled, this, &jobmessages::withdrawClosedWindow);
    connect(this, &AppDelegate::terminating, &jobmessages::withdrawClosedWindow);
    connect(&m_openWindows, &OpenWindows::staysWithoutWindows, this, [] {
        sharedDesktop().requestBackground(
            Texts::tr("%1 converts movies, or waits for movies, without a window.")
                .arg(ApplicationInfo::name()));
    });
    connect(&m_openWindows, &OpenWindows::endRequested, this, [this] { terminate(true); });
    connect(&m_intake, &FileIntake::filesWaitingChanged, &m_openWindows, &OpenWindows::reconsider);
    connect(&m_intake, &FileIntake::scanningStarted, &m_openWindows, &OpenWindows::reconsider);
    connect(&m_intake, &FileIntake::becameIdle, &m_openWindows, &OpenWindows::reconsider);
    connect(&m_lastQueue, &LastQueue::changed, &m_openWindows, &OpenWindows::reconsider);
    connect(&m_removals, &Removals::changed, &m_openWindows, &OpenWindows::reconsider);
    connect(&m_endAction, &EndAction::changed, &m_openWindows, &OpenWindows::reconsider);
    connect(&m_watchFolder, &WatchFolder::changed, &m_openWindows, &OpenWindows::reconsider);
}

OpenWindows::Work AppDelegate::work() const {
    OpenWindows::Work work;
    work.isConverting = m_queue.jobCountWithState(JobState::Converting) > 0;
    work.isWaiting = !m_queue.isIdle() || isMoreComing();
    work.isExpected =
        m_watchFolder.isExpecting() || m_removals.isOffered() || m_endAction.secondsLeft().has_value();
    return work;
}

/// The queue is done, as far as it knows: movies of a batch may still be probed.
void AppDelegate::quitWhenDone() {
    m_quitIsDue = m_intake.isBatch();
    if (m_quitIsDue || m_lastQueue.isReturning() || m_endAction.deferQuit()) return;
    terminate(true);
}

bool AppDelegate::isMoreComing() const {
    return m_lastQueue.isReturning() || !m_searchedPaths.isEmpty() || m_intake.hasUnconfirmedMovies();
}

void AppDelegate::applicationWillFinishLaunching() {
    m_library = std::make_unique<QuillonLib>();
    m_build = makeString("%@ %i", Texts::tr("Build:"), m_library->appBuildNumber());
    m_version = makeString("%@ %@", Texts::tr("Version:"), m_library->appVersionString());
    increaseUsages(*this, false, false);
    m_moveObservation = PXAppMovedHandler::startMoveObservation(
        {[this](const QString& newPath, Block launch) { handOver(newPath, std::move(launch)); }});
    // This encoding can no longer be chosen.
    if (defaultInt(settings::ExternalSubtitleEncoding.key) == static_cast<int>(kRetiredSubtitleEncoding))
        settings::ExternalSubtitleEncoding.setValue({});
    showSpeedNotice();
    connect(&sharedDesktop(), &Desktop::notificationActivated, this,
            [this](const QString& path, const QString& activationToken) {
                if (path.isEmpty()) {
                    Q_EMIT mainWindowRequested(activationToken);
                } else {
                    sharedDesktop().reveal(path);
                }
            });
    connect(&sharedDesktop(), &Desktop::quitActivated, this, [this](const QString& activationToken) {
        if (m_terminates) return;
        // The question needs the window.
        if (work().isConverting) Q_EMIT mainWindowRequested(activationToken);
        terminate(true);
    });
    m_addSheet.hide();
    QStringList missing{m_destinations.restoreAtLaunch(), m_watchFolder.resumeAtLaunch()};
    missing.removeAll(QString());
    if (!missing.isEmpty()) Q_EMIT statusMessage(missing.join(u' '));
}

void AppDelegate::showSpeedNotice() {
    constexpr qint64 kEnoughUsages = 4;
    const QString usages = makeString("quillonlib_%@_usages", m_library->appVersionString());
    if (settings::WelcomeShown.value() || defaultInt(usages) < kEnoughUsages ||
        settings::ConversionPreset.value() != ConversionStyle::Compatible) {
        return;
    }
    Alert notice;
    notice.title = Texts::tr("Picking up Speed!");
    notice.message = Texts::tr(
        "Note that conversion will be much faster, more reliable and higher quality if you select 'High Speed & Quality' in the 'Audio Conversion Settings' in the Preferences, though the resulting files may not play with sound on some devices (e.g. iOS). Just try it out!");
    notice.icon = "ok.png";
    notice.buttons = {AlertButton::cancelling(Texts::tr("OK")), Texts::tr("Show the Preference")};
    // The window does not exist yet.
    showInTurn([self = QPointer(this), notice] {
        alertPresenter().presentSheet(notice, [self](const AlertAnswer& answer) {
            settings::WelcomeShown.setValue(true);
            standardUserDefaults().synchronise();
            if (self && answer.response == kAlertSecondButton)
                Q_EMIT self->preferenceRequested(settings::ConversionPreset.key);
        });
    });
}

void AppDelegate::applicationShouldHandleReopen() {
    Q_EMIT mainWindowRequested();
}

bool AppDelegate::applicationShouldTerminate() {
    if (m_queue.jobCountWithState(JobState::Converting) == 0) return true;
    // A notification can be clicked while the question is open.
    if (m_isAsking) return false;
    const QScopedValueRollback asking(m_isAsking, true);
    return alert_apptitled(Texts::tr("Conversion is in progresss. Are you sure you want to quit?"),
                           Texts::tr("Quit"),
                           AlertButton::cancellingByDefault(Texts::tr("Cancel"))) == kAlertFirstButton;
}

void AppDelegate::applicationWillTerminate() {
    m_terminates = true;
    *m_isStopped = true;
    m_removals.completeUndo();
    // The queue is emptied below, and the next instance may be there before the tools have ended.
    m_lastQueue.stop();
    m_store.close();
    Q_EMIT terminating();
    m_intake.stop();
    saveSettings();
    m_watchFolder.stopAccess();
    m_removals.settle();
    m_queue.removeAll();
}

bool AppDelegate::isTerminated() {
    return ToolReaper::shared().isIdle();
}

void AppDelegate::terminate(bool mayAsk) {
    if (m_terminates || (mayAsk && !applicationShouldTerminate())) return;
    applicationWillTerminate();
    dispatch_async_main([self = QPointer(this)] {
        if (self) self->announceTerminated();
    });
    // A tool that cannot be killed must not prevent the end of the session.
    constexpr int kMaximumMilliseconds = 5000;
    QTimer::singleShot(kMaximumMilliseconds, this, &AppDelegate::terminated);
}

void AppDelegate::announceTerminated() {
    if (m_terminates && isTerminated()) Q_EMIT terminated();
}

void AppDelegate::handOver(const QString& newPath, Block launch) {
    // The application was ended while the alert was open: do not start another instance.
    if (m_terminates) return;
    m_store.goOnAt({ApplicationInfo::bundlePath(), newPath});
    // Wait until the tools have ended and the names of their outputs are free again.
    m_successor = std::move(launch);
    terminate(false);
}

void AppDelegate::startSuccessor() {
    if (const Block start = std::exchange(m_successor, nullptr)) start();
}

void AppDelegate::openFirstFiles(const QStringList& paths) {
    openStore();
    if (!paths.isEmpty()) openFiles(paths);
}

void AppDelegate::openStore() {
    if (m_terminates || std::exchange(m_storeIsOpen, true)) return;
    m_store.open(QuillonLib::shared().suppDir() + "/Queue");
    m_lastQueue.offer();
}

void AppDelegate::openFiles(const QStringList& paths) {
    // A look at many files takes time, as does the search of a large folder on a slow disk.
    constexpr qsizetype kMany = 200;
    if (paths.size() > kMany || std::ranges::any_of(paths, isFolder)) {
        m_searchedPaths += paths;
        m_store.setSearchedPaths(m_searchedPaths);
        m_endAction.reconsider();
        dispatch_async_back([self = QPointer(this), paths, isStopped = m_isStopped] {
            QStringList leftOut;
            const QStringList files = moviefiles::withFoldersSearched(paths, isStopped.get(), &leftOut);
            const QStringList folders = collections::filtered(paths, isFolder);
            dispatch_async_main([self, paths, files, folders, leftOut] {
                if (!self) return;
                for (const QString& path : paths)
                    self->m_searchedPaths.removeOne(path);
                self->addFiles(files, folders, paths, leftOut);
                self->m_store.setSearchedPaths(self->m_searchedPaths);
                self->m_endAction.reconsider();
                self->m_openWindows.reconsider();
            });
        });
    } else {
        addFiles(paths, {}, paths);
    }
    Q_EMIT mainWindowRequested();
}

void AppDelegate::takeArrival(const QString& path) {
    if (m_terminates) return;
    addFiles({path}, {}, {path}, {}, Drops::Origin::WatchFolder);
    if (m_openWindows.isMainOpen()) {
        Q_EMIT mainWindowRequested();
    } else {
        jobmessages::notifyOfArrival(path);
    }
}

void AppDelegate::addFiles(const QStringList& files, const QStringList& folders, const QStringList& given,
                           QStringList leftOut, Drops::Origin origin) {
    if (m_terminates) return;
    const bool isUseful = std::ranges::any_of(
        files, [](const QString& path) { return moviefiles::isMovie(path) || moviefiles::isSubtitle(path); });
    leftOut += collections::filtered(
        files, [](const QString& path) { return !moviefiles::refusedType(path).isEmpty(); });
    for (QString& path : leftOut)
        path = QFileInfo(path).fileName();
    showRefusal(!leftOut.isEmpty()            ? moviefiles::whyLeftOut(leftOut)
                : isUseful || given.isEmpty() ? QString()
                                              : droppedfiles::refusal(urlsOf(given)));
    m_intake.openFiles(files, folders, origin);
}

void AppDelegate::showRefusal(const QString& reason) {
    // Keep a message about something else.
    if (reason.isEmpty() && m_refusal.isEmpty()) return;
    m_refusal = reason;
    Q_EMIT statusMessage(reason);
}

void AppDelegate::addClicked() {
    m_panels.chooseFiles(moviefiles::acceptedFileTypes(),
                         [this](const QStringList& files) { openFiles(files); });
}

bool AppDelegate::draggingEntered(const QList<QUrl>& urls) {
    const bool isAccepted = droppedfiles::isAccepted(droppedfiles::paths(urls));
    showRefusal(isAccepted ? QString() : droppedfiles::refusal(urls));
    return isAccepted;
}

bool AppDelegate::performDragOperation(const QList<QUrl>& urls) {
    openFiles(droppedfiles::paths(urls));
    return true;
}

void AppDelegate::preferencesWillClose() {
    saveSettings();
}

void AppDelegate::openDocumentationWindow(std::optional<int> tag) {
    constexpr int kAsItIs = -1;
    Q_EMIT documentationWindowRequested(tag && *tag >= 0 ? *tag : kAsItIs);
}
