#include "app/WatchFolder.h"

#include "app/FolderWatch.h"
#include "settings/Settings.h"
#include "support/Desktop.h"
#include "support/FolderAccess.h"
#include "support/Log.h"
#include "support/Text.h"

#include <QDir>
#include <QFileInfo>
#include <QScopedValueRollback>

WatchFolder::WatchFolder(FilePanels& panels, QObject* parent)
    : QObject(parent), m_panels(panels), m_processedNames(std::make_shared<QSet<QString>>()) {
    const auto follow = [this] {
        if (!m_isStoring) watchfolderActiveClicked();
    };
    settings::WatchfolderActive.onChange(this, follow);
    settings::WatchfolderBookmark.onChange(this, follow);
}

WatchFolder::~WatchFolder() {
    stopAccess();
}

void WatchFolder::store(const settings::Row& setting, const QVariant& value) {
    const QScopedValueRollback storing(m_isStoring, true);
    setDefaultObject(setting.key, value);
}

void WatchFolder::turnOff() {
    store(settings::WatchfolderActive, qint64{0});
}

void WatchFolder::watchfolderSetClicked() {
    m_panels.chooseFolder(FilePanels::Over::Preferences, folder(), [this](const QString& chosen) {
        QString error;
        const auto bookmark = folderaccess::createBookmark(chosen, error);
        if (!bookmark) {
            logError("Error creating bookmark: %@", error);
            return;
        }
        m_label = QDir(chosen).dirName();
        store(settings::WatchfolderBookmark, *bookmark);
        standardUserDefaults().synchronise();
        watchfolderActiveClicked();
        Q_EMIT changed();
    });
}

void WatchFolder::watchfolderActiveClicked() {
    stopAccess();
    const QByteArray bookmark = settings::WatchfolderBookmark.value();
    if (bookmark.isEmpty()) return;
    QString error;
    const auto resolved = folderaccess::resolveBookmark(bookmark, error);
    if (!resolved || !folderaccess::startAccessing(*resolved)) {
        store(settings::WatchfolderBookmark, {});
        turnOff();
        m_current = nullptr;  // What it watches is watched to the end of this run.
        m_problem = error;
        Q_EMIT changed();
        return;
    }
    m_label = QDir(*resolved).dirName();
    m_folder = *resolved;
    m_hasAccess = true;
    if (settings::WatchfolderActive.value()) {
        startObserving(*resolved);
    } else {
        if (m_current) m_current->stop();
        m_current = nullptr;
        m_problem.clear();
        stopAccess();
        m_folder = *resolved;
    }
    Q_EMIT changed();
}

void WatchFolder::forget() {
    turnOff();
    watchfolderActiveClicked();
    store(settings::WatchfolderActive, {});
    store(settings::WatchfolderBookmark, {});
    m_folder.reset();
    m_label.clear();
    Q_EMIT changed();
}

void WatchFolder::startObserving(const QString& folder) {
    auto watch = std::make_unique<FolderWatch>(m_processedNames);
    m_problem = watch->start(folder);
    if (!watch->isRunning()) {
        turnOff();
        m_current = nullptr;
        return;
    }
    FolderWatch* started = watch.get();
    connect(started, &FolderWatch::arrived, this, &WatchFolder::arrived);
    connect(started, &FolderWatch::waitingChanged, this, &WatchFolder::changed);
    connect(started, &FolderWatch::problem, this, &WatchFolder::say);
    connect(started, &FolderWatch::ended, this,
            [this, started](const QString& reason) { onEnded(started, reason); });
    m_watches.push_back(std::move(watch));
    m_current = started;
}

void WatchFolder::onEnded(const FolderWatch* watch, const QString& reason) {
    if (watch != m_current) return;
    m_current = nullptr;
    turnOff();
    say(reason);
    sharedDesktop().notify({text::localized("The watch folder is off"), reason, {}, {}});
}

void WatchFolder::say(const QString& text) {
    m_problem = text;
    Q_EMIT message(text);
    Q_EMIT changed();
}

void WatchFolder::stopAccess() {
    if (m_hasAccess) folderaccess::stopAccessing(*m_folder);
    m_hasAccess = false;
    m_folder.reset();
}

bool WatchFolder::isWatching() const {
    return m_current && m_current->isRunning();
}

QString WatchFolder::stateText() const {
    if (!isWatching()) {
        const QString off = text::localized("Off.");
        return m_problem.isEmpty() ? off : off + u' ' + m_problem;
    }
    const QStringList waiting = m_current->waiting();
    if (waiting.size() == 1)
        return makeString("Waiting for “%@” to be complete.", QFileInfo(waiting.first()).fileName());
    if (!waiting.isEmpty()) return makeString("Waiting for %li files to be complete.", waiting.size());
    return m_problem.isEmpty() ? text::localized("Watching.") : m_problem;
}
