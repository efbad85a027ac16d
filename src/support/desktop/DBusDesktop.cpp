#include "support/desktop/DBusDesktop.h"

#include "support/desktop/Buses.h"
#include "support/desktop/OpeningProgram.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusReply>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <fcntl.h>
#include <limits>
#include <utility>

namespace {

constexpr auto kPortalService = "org.freedesktop.portal.Desktop";
constexpr auto kPortalPath = "/org/freedesktop/portal/desktop";
constexpr auto kNotificationService = "org.freedesktop.Notifications";
constexpr auto kNotificationPath = "/org/freedesktop/Notifications";

constexpr int kPatienceMilliseconds = 2000;
constexpr int kUnlimited = std::numeric_limits<int>::max();

QDBusMessage portalCall(const char* interface, const char* method, const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        kPortalService, kPortalPath, QString("org.freedesktop.portal.") + interface, method);
    call.setArguments(arguments);
    return call;
}

constexpr auto kShow = "show";
constexpr auto kQuit = "quit";

bool isClickable(const Notification& notification) {
    return !notification.path.isEmpty() || notification.showsWindow;
}

QDBusMessage logindCall(const QString& method, const QVariantList& arguments = {}) {
    QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                                       "org.freedesktop.login1.Manager", method);
    call.setArguments(arguments);
    return call;
}

QString methodOf(PowerAction action) {
    return action == PowerAction::Sleep ? QStringLiteral("Suspend") : QStringLiteral("PowerOff");
}

/// A file that a service outside of the sandbox gets, where its path may name another file. Invalid if it
/// cannot be opened.
QDBusUnixFileDescriptor opened(const QString& path, int flags) {
    QDBusUnixFileDescriptor descriptor;
    descriptor.giveFileDescriptor(
        ::open(QFile::encodeName(path).constData(), flags | O_NONBLOCK | O_CLOEXEC));
    return descriptor;
}

/// Whether the call was accepted, or may still be accepted after a timeout.
bool isAnswered(const QDBusConnection& bus, const QDBusMessage& call) {
    const QDBusMessage answer = bus.call(call, QDBus::Block, kPatienceMilliseconds);
    return answer.type() != QDBusMessage::ErrorMessage || QDBusError(answer).type() == QDBusError::NoReply;
}

}  // namespace

DBusDesktop::DBusDesktop(QString applicationName, QString desktopEntry, bool insideFlatpak)
    : m_applicationName(std::move(applicationName)),
      m_desktopEntry(std::move(desktopEntry)),
      m_insideFlatpak(insideFlatpak) {
    connect(&m_appearance, &DesktopAppearance::changed, this, &Desktop::appearanceChanged);
}

bool DBusDesktop::isInsideFlatpak() {
    return QFileInfo::exists("/.flatpak-info");
}

DBusDesktop::~DBusDesktop() {
    // Pending messages would be lost with the connection. The reply to one may cause another.
    while (!m_pendingCalls.isEmpty()) {
        QDBusPendingCallWatcher* call = *m_pendingCalls.cbegin();
        m_pendingCalls.remove(call);
        call->waitForFinished();
    }
}

void DBusDesktop::sendForSure(const QDBusConnection& bus, const QDBusMessage& call,
                              const std::function<void(const QDBusPendingCall&)>& handler) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, kPatienceMilliseconds), this);
    m_pendingCalls.insert(watcher);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, handler] {
        if (handler) handler(*watcher);
        m_pendingCalls.remove(watcher);
        watcher->deleteLater();
    });
}

quint32 DBusDesktop::acquireSleepAssertion(const QString& reason) {
    const quint32 assertion = ++m_lastAssertion;
    m_assertions.insert(assertion, {});
    const auto bus = m_insideFlatpak ? buses::session() : buses::system();
    if (!bus) return assertion;
    if (m_insideFlatpak) {
        constexpr uint kSuspendAndIdle = 4 | 8;
        const auto call =
            portalCall("Inhibit", "Inhibit", {QString(), kSuspendAndIdle, QVariantMap{{"reason", reason}}});
        buses::whenAnswered(*bus, call, this, [this, assertion](const QDBusPendingCall& answer) {
            const QDBusPendingReply<QDBusObjectPath> reply = answer;
            if (reply.isError()) return;
            const bool isReleased = !m_assertions.contains(assertion);
            m_assertions[assertion].portalRequest = reply.value().path();
            if (isReleased) releaseSleepAssertion(assertion);
        });
        return assertion;
    }
    const auto call =
        logindCall("Inhibit", {QString("sleep:idle"), m_applicationName, reason, QString("block")});
    buses::whenAnswered(*bus, call, this, [this, assertion](const QDBusPendingCall& answer) {
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = answer;
        // If the assertion was released meanwhile, the descriptor closes with the reply.
        const auto held = m_assertions.find(assertion);
        if (!reply.isError() && held != m_assertions.end()) held->descriptor = reply.value();
    });
    return assertion;
}

void DBusDesktop::releaseSleepAssertion(quint32 assertion) {
    const Assertion released = m_assertions.take(assertion);
    if (released.portalRequest.isEmpty()) return;
    if (auto bus = buses::session()) {
        bus->send(QDBusMessage::createMethodCall(kPortalService, released.portalRequest,
                                                 "org.freedesktop.portal.Request", "Close"));
    }
}

void DBusDesktop::askWhetherAllowed(PowerAction action, QObject* context,
                                    const std::function<void(bool)>& handler) {
    const auto bus = buses::system();
    if (!bus) return;
    buses::whenAnswered(*bus, logindCall("Can" + methodOf(action)), context,
                        [handler](const QDBusPendingCall& answer) {
                            const QDBusPendingReply<QString> reply = answer;
                            // Apart from "yes" and "challenge", logind has words for what an inhibitor holds
                            // off just now, which may be our own.
                            handler(!reply.isError() && reply.value() != u"no" && reply.value() != u"na");
                        });
}

void DBusDesktop::carryOut(PowerAction action, QObject* context,
                           const std::function<void(const QString&)>& handler) {
    const auto bus = buses::system();
    if (!bus) return;
    constexpr bool kMayAskForPassword = true;
    buses::whenAnswered(
        *bus, logindCall(methodOf(action), {kMayAskForPassword}), context,
        [handler](const QDBusPendingCall& answer) {
            handler(answer.isError() ? answer.error().message() : QString());
        },
        kUnlimited);
}

void DBusDesktop::notify(const Notification& notification) {
    const auto bus = buses::session();
    if (!bus) return;
    listenForActions(*bus);
    if (m_insideFlatpak) {
        notifyThroughPortal(*bus, notification);
    } else if (m_groups.value(notification.group).isAwaited) {
        m_groups[notification.group].next = notification;
    } else {
        post(*bus, notification);
    }
}

void DBusDesktop::post(const QDBusConnection& bus, const Notification& notification) {
    QStringList actions;
    if (isClickable(notification)) actions << "default" << notification.title;
    if (!notification.action.isEmpty()) actions << kShow << notification.action;
    if (!notification.quitAction.isEmpty()) actions << kQuit << notification.quitAction;
    const QVariantMap hints{{"desktop-entry", m_desktopEntry}, {"sound-name", "message-new-instant"}};
    QDBusMessage call = QDBusMessage::createMethodCall(kNotificationService, kNotificationPath,
                                                       kNotificationService, "Notify");
    constexpr int kUsualDuration = -1;
    call.setArguments({m_applicationName, m_groups.value(notification.group).shown, m_desktopEntry,
                       notification.title, notification.text.toHtmlEscaped(), actions, hints,
                       kUsualDuration});
    if (!notification.group.isEmpty()) m_groups[notification.group].isAwaited = true;
    sendForSure(bus, call, [this, notification](const QDBusPendingCall& answer) {
        const QDBusPendingReply<uint> reply = answer;
        onPosted(notification, reply.isError() ? 0 : reply.value());
    });
}

/// `id` is 0 if it was not accepted.
void DBusDesktop::onPosted(const Notification& notification, uint id) {
    if (id != 0 && isClickable(notification))
        m_pathsOfNotifications.insert(QString::number(id), notification.path);
    if (notification.group.isEmpty()) return;
    Group& group = m_groups[notification.group];
    group.isAwaited = false;
    if (id != 0) group.shown = id;
    const auto next = std::exchange(group.next, std::nullopt);
    const auto bus = buses::session();
    if (std::exchange(group.isWithdrawn, false) && bus) closeShown(*bus, group);
    if (next && bus) post(*bus, *next);
}

void DBusDesktop::withdraw(const QString& group) {
    const auto bus = buses::session();
    if (!bus) return;
    if (m_insideFlatpak) {
        if (m_pathsOfNotifications.remove(group))
            sendForSure(*bus, portalCall("Notification", "RemoveNotification", {group}));
        return;
    }
    const auto found = m_groups.find(group);
    if (found == m_groups.end()) return;
    found->next.reset();
    found->isWithdrawn = found->isAwaited;
    closeShown(*bus, *found);
}

void DBusDesktop::closeShown(const QDBusConnection& bus, Group& group) {
    const uint id = std::exchange(group.shown, 0);
    if (id == 0) return;
    m_pathsOfNotifications.remove(QString::number(id));
    QDBusMessage call = QDBusMessage::createMethodCall(kNotificationService, kNotificationPath,
                                                       kNotificationService, "CloseNotification");
    call.setArguments({id});
    sendForSure(bus, call);
}

void DBusDesktop::notifyThroughPortal(const QDBusConnection& bus, const Notification& notification) {
    const QString id =
        notification.group.isEmpty() ? QString::number(++m_lastPortalNotification) : notification.group;
    QVariantMap content{{"title", notification.title}, {"body", notification.text}};
    if (isClickable(notification)) {
        content.insert("default-action", kShow);
        m_pathsOfNotifications.insert(id, notification.path);
    }
    QList<QVariantMap> buttons;
    for (const auto& [label, action] :
         {std::pair(notification.action, kShow), {notification.quitAction, kQuit}}) {
        if (!label.isEmpty()) buttons.append({{"label", label}, {"action", action}});
    }
    if (!buttons.isEmpty()) {
        qDBusRegisterMetaType<QList<QVariantMap>>();
        content.insert("buttons", QVariant::fromValue(buttons));
    }
    sendForSure(bus, portalCall("Notification", "AddNotification", {id, content}));
}

void DBusDesktop::listenForActions(QDBusConnection bus) {
    if (std::exchange(m_isListening, true)) return;
    // No service name: with a name, QtDBus blocks to look up its owner first.
    if (m_insideFlatpak) {
        bus.connect({}, kPortalPath, "org.freedesktop.portal.Notification", "ActionInvoked", this,
                    SLOT(onPortalActionInvoked(QString, QString, QVariantList)));
        return;
    }
    bus.connect({}, kNotificationPath, kNotificationService, "ActivationToken", this,
                SLOT(onActivationToken(uint, QString)));
    bus.connect({}, kNotificationPath, kNotificationService, "ActionInvoked", this,
                SLOT(onActionInvoked(uint, QString)));
    bus.connect({}, kNotificationPath, kNotificationService, "NotificationClosed", this,
                SLOT(onNotificationClosed(uint, uint)));
}

void DBusDesktop::activate(const QString& id, const QString& action) {
    const auto clicked = m_pathsOfNotifications.constFind(id);
    if (clicked == m_pathsOfNotifications.cend()) return;
    const QString token = std::exchange(m_activationToken, {});
    if (action == QLatin1StringView(kQuit)) {
        Q_EMIT quitActivated(token);
    } else {
        Q_EMIT notificationActivated(QString(*clicked), token);
    }
}

void DBusDesktop::onActivationToken(uint id, const QString& token) {
    if (m_pathsOfNotifications.contains(QString::number(id))) m_activationToken = token;
}

void DBusDesktop::onActionInvoked(uint id, const QString& action) {
    activate(QString::number(id), action);
}

void DBusDesktop::onNotificationClosed(uint id, uint) {
    m_pathsOfNotifications.remove(QString::number(id));
    for (Group& group : m_groups) {
        if (group.shown == id) group.shown = 0;
    }
}

void DBusDesktop::onPortalActionInvoked(const QString& id, const QString& action,
                                        const QVariantList& parameters) {
    // Newer portals pass it on.
    for (const QVariant& parameter : parameters) {
        const auto argument = parameter.value<QDBusArgument>();
        if (argument.currentType() == QDBusArgument::MapType)
            m_activationToken = qdbus_cast<QVariantMap>(argument).value("activation-token").toString();
    }
    activate(id, action);
    m_pathsOfNotifications.remove(id);
}

void DBusDesktop::revealTogether(const QStringList& paths) {
    QStringList urls;
    QSet<QString> folders;
    for (const QString& path : paths) {
        const QFileInfo file(path);
        urls.append(QUrl::fromLocalFile(file.absoluteFilePath()).toString(QUrl::FullyEncoded));
        folders.insert(file.absolutePath());
    }
    const auto openFolders = [this, folders] {
        for (const QString& folder : folders)
            openUrl(QUrl::fromLocalFile(folder));
    };
    const auto bus = buses::session();
    if (!bus) {
        openFolders();
        return;
    }
    if (m_insideFlatpak) {
        for (const QString& path : paths) {
            if (folders.remove(QFileInfo(path).absolutePath())) revealThroughPortal(*bus, path);
        }
        return;
    }
    QDBusMessage call =
        QDBusMessage::createMethodCall("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", "ShowItems");
    call.setArguments({urls, QString()});
    buses::whenAnswered(*bus, call, this, [openFolders](const QDBusPendingCall& answer) {
        if (answer.isError()) openFolders();
    });
}

/// The portal selects one file; a folder of which several are to be shown is opened once.
void DBusDesktop::revealThroughPortal(const QDBusConnection& bus, const QString& path) {
    const QDBusUnixFileDescriptor file = opened(path, O_RDONLY);
    if (!file.isValid()) {
        openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
        return;
    }
    sendForSure(
        bus, portalCall("OpenURI", "OpenDirectory", {QString(), QVariant::fromValue(file), QVariantMap()}));
}

bool DBusDesktop::moveToTrash(const QString& path) {
    if (!m_insideFlatpak) return Desktop::moveToTrash(path);
    // The trash of the sandbox's own home is not the user's.
    const auto bus = buses::session();
    const QDBusUnixFileDescriptor file = opened(path, O_RDWR | O_NOFOLLOW);
    if (!bus || !file.isValid()) return false;
    constexpr uint kMoved = 1;
    const QDBusReply<uint> reply =
        bus->call(portalCall("Trash", "TrashFile", {QVariant::fromValue(file)}), QDBus::Block);
    return reply.isValid() && reply.value() == kMoved;
}

QStringList DBusDesktop::transferredFiles(const QString& key) {
    const auto bus = buses::session();
    if (!bus) return {};
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.portal.Documents", "/org/freedesktop/portal/documents",
        "org.freedesktop.portal.FileTransfer", "RetrieveFiles");
    call.setArguments({key, QVariantMap()});
    const QDBusReply<QStringList> reply = bus->call(call, QDBus::Block, kPatienceMilliseconds);
    return reply.value();
}

void DBusDesktop::requestBackground(const QString& reason) {
    if (!m_insideFlatpak) return;
    if (const auto bus = buses::session())
        sendForSure(*bus, portalCall("Background", "RequestBackground",
                                     {QString(), QVariantMap{{"reason", reason}}}));
}

bool DBusDesktop::openUrl(const QUrl& url) {
    if (url.scheme().isEmpty()) return false;
    const bool isMail = url.scheme() == u"mailto";
    // Prefer the program: it is already started when this returns, so that a page or a mail opens even if the
    // application quits right afterwards.
    if (!m_insideFlatpak && !isMail && openingprogram::start(url)) return true;
    if (!m_insideFlatpak && isMail) {
        if (const auto isOpened = openingprogram::startAndWait(url)) return *isOpened;
    }
    const auto bus = buses::session();
    if (!bus) return false;
    if (!url.isLocalFile()) {
        const auto call =
            portalCall("OpenURI", "OpenURI", {QString(), url.toString(QUrl::FullyEncoded), QVariantMap()});
        if (isMail) return isAnswered(*bus, call);
        sendForSure(*bus, call);
        return true;
    }
    const QDBusUnixFileDescriptor descriptor = opened(url.toLocalFile(), O_RDONLY);
    if (!descriptor.isValid()) return false;
    sendForSure(
        *bus, portalCall("OpenURI", "OpenFile", {QString(), QVariant::fromValue(descriptor), QVariantMap()}));
    return true;
}

void DBusDesktop::setLauncherProgress(std::optional<double> fraction) {
    if (fraction) fraction = std::clamp(*fraction, 0.0, 1.0);
    if (std::exchange(m_launcherProgress, fraction) == fraction) return;
    const auto bus = buses::session();
    if (!bus) return;
    QDBusMessage signal = QDBusMessage::createSignal(buses::objectPath(m_desktopEntry),
                                                     "com.canonical.Unity.LauncherEntry", "Update");
    const QVariantMap properties{{"progress", fraction.value_or(0)},
                                 {"progress-visible", fraction.has_value()}};
    signal.setArguments({"application://" + m_desktopEntry + ".desktop", properties});
    bus->send(signal);
}

void DBusDesktop::watchAppearance() {
    if (const auto bus = buses::session()) m_appearance.watch(*bus);
}
