#include "app/watching/WatchFolder.h"

#include "app/watching/MovieArrivals.h"
#include "settings/Settings.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <sys/stat.h>

namespace {

/// Device and inode of the file at `path`.
std::optional<std::pair<quint64, quint64>> identityOf(const QString& path) {
    struct stat information = {};
    if (::stat(QFile::encodeName(path).constData(), &information) != 0) return std::nullopt;
    return std::pair<quint64, quint64>(information.st_dev, information.st_ino);
}

bool isAwaited() {
    return settings::AbsentWatchfolderActive.value();
}

QString goneText(const QString& folder) {
    return isAwaited()
               ? Texts::tr("The watch folder “%1” is not there. It is watched again when it is.").arg(folder)
               : Texts::tr("The watch folder “%1” is not there.").arg(folder);
}

}  // namespace

WatchFolder::WatchFolder(FilePanels& panels, QObject* parent, const WatchTimes& times)
    : QObject(parent), m_panels(panels), m_times(times), m_processedNames(std::make_shared<QSet<QString>>()) {
    connect(&m_returnWatch, &ReturnWatch::mayHaveReturned, this, &WatchFolder::restoreReturned);
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

QString WatchFolder::resumeAtLaunch() {
    const QByteArray absent = settings::AbsentWatchfolderBookmark.value();
    if (absent.isEmpty()) return apply();
    if (restoreReturned()) return {};
    const QByteArray stored = settings::WatchfolderBookmark.value();
    if (!stored.isEmpty() && stored != absent) {
        forgetAbsent();
        return apply();
    }
    if (!stored.isEmpty()) return apply();
    m_returnWatch.setFolders({folderaccess::placeOf(absent)});
    m_problem = goneText(folderaccess::placeOf(absent));
    Q_EMIT changed();
    return isAwaited() ? m_problem : QString();
}

void WatchFolder::watchfolderActiveClicked() {
    const bool isChosen = !settings::WatchfolderBookmark.value().isEmpty();
    // If it is turned on or off while it is absent, this applies when it returns.
    if (!isChosen && !settings::AbsentWatchfolderBookmark.value().isEmpty())
        settings::AbsentWatchfolderActive.setValue(settings::WatchfolderActive.value());
    if (const QString text = apply(); !text.isEmpty()) Q_EMIT message(text);
}

QString WatchFolder::apply() {
    stopAccess();
    const QByteArray bookmark = settings::WatchfolderBookmark.value();
    if (bookmark.isEmpty()) return {};
    QString error;
    const auto resolved = folderaccess::resolveBookmark(bookmark, error);
    if (!resolved || !folderaccess::startAccessing(*resolved)) {
        const bool wasAwaited = isAwaited() && settings::AbsentWatchfolderBookmark.value() == bookmark;
        remember(bookmark, settings::WatchfolderActive.value() || wasAwaited);
        store(settings::WatchfolderBookmark, {});
        turnOff();
        m_current = nullptr;  // This folder is watched until the process ends.
        m_problem = goneText(folderaccess::placeOf(bookmark));
        Q_EMIT changed();
        return m_problem;
    }
    forgetAbsent();
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
    return {};
}

void WatchFolder::remember(const QByteArray& bookmark, bool isActive) {
    setDefaultObject(settings::AbsentWatchfolderBookmark.key, bookmark);
    settings::AbsentWatchfolderActive.setValue(isActive);
    const QString place = folderaccess::placeOf(bookmark);
    m_leftBehind = identityOf(place);
    m_returnWatch.setFolders({place});
}

void WatchFolder::forgetAbsent() {
    setDefaultObject(settings::AbsentWatchfolderBookmark.key, {});
    setDefaultObject(settings::AbsentWatchfolderActive.key, {});
    m_leftBehind.reset();
    m_returnWatch.setFolders({});
}

bool WatchFolder::restoreReturned() {
    const QByteArray absent = settings::AbsentWatchfolderBookmark.value();
    const QByteArray stored = settings::WatchfolderBookmark.value();
    const bool isOther = !stored.isEmpty() && stored != absent;
    QString error;
    const auto folder = folderaccess::resolveBookmark(absent, error);
    if (absent.isEmpty() || isOther || !folder || identityOf(*folder) == m_leftBehind) return false;
    const bool isActive = isAwaited();
    forgetAbsent();
    store(settings::WatchfolderBookmark, absent);
    store(settings::WatchfolderActive, qint64{isActive});
    m_problem.clear();
    apply();
    Q_EMIT message(Texts::tr("The watch folder “%1” is there again.").arg(*folder));
    return true;
}

void WatchFolder::forget() {
    turnOff();
    watchfolderActiveClicked();
    store(settings::WatchfolderActive, {});
    store(settings::WatchfolderBookmark, {});
    forgetAbsent();
    m_problem.clear();
    m_folder.reset();
    m_label.clear();
    Q_EMIT changed();
}

void WatchFolder::startObserving(const QString& folder) {
    auto watch = std::make_unique<MovieArrivals>(m_processedNames, nullptr, m_times);
    m_problem = watch->start(folder);
    if (!watch->isRunning()) {
        turnOff();
        m_current = nullptr;
        return;
    }
    MovieArrivals* started = watch.get();
    connect(started, &MovieArrivals::arrived, this, &WatchFolder::arrived);
    connect(started, &MovieArrivals::waitingChanged, this, &WatchFolder::changed);
    connect(started, &MovieArrivals::problem, this, &WatchFolder::say);
    connect(started, &MovieArrivals::ended, this,
            [this, started](const QString& reason) { onEnded(started, reason); });
    m_watches.push_back(std::move(watch));
    m_current = started;
}

void WatchFolder::onEnded(const MovieArrivals* watch, const QString& reason) {
    if (watch != m_current) return;
    m_current = nullptr;
    turnOff();
    remember(settings::WatchfolderBookmark.value(), true);
    say(reason);
    sharedDesktop().notify({Texts::tr("The watch folder is off"), reason, {}, {}, {}});
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

bool WatchFolder::isChosen() const {
    return !settings::WatchfolderBookmark.value().isEmpty() ||
           !settings::AbsentWatchfolderBookmark.value().isEmpty();
}

bool WatchFolder::isExpecting() const {
    return isWatching() || (isAwaited() && !settings::AbsentWatchfolderBookmark.value().isEmpty());
}

QString WatchFolder::stateText() const {
    if (!isWatching()) {
        const QString off = Texts::tr("Off.");
        return m_problem.isEmpty() ? off : off + u' ' + m_problem;
    }
    const QStringList waiting = m_current->waiting();
    if (waiting.size() == 1)
        return Texts::tr("Waiting for “%1” to be complete.").arg(QFileInfo(waiting.first()).fileName());
    if (!waiting.isEmpty())
        return Texts::tr("Waiting for %n file(s) to be complete.", nullptr, static_cast<int>(waiting.size()));
    return m_problem.isEmpty() ? Texts::tr("Watching.") : m_problem;
}
