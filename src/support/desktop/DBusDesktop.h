#pragma once

#include "support/desktop/Desktop.h"
#include "support/desktop/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QHash>
#include <QSet>

#include <functional>
#include <optional>

class QDBusPendingCall;
class QDBusPendingCallWatcher;

/// The desktop over D-Bus: logind, the notification daemon and the file manager, or inside a Flatpak the
/// desktop portal. Connects to a bus at the first use and only if one is announced. Only openUrl(),
/// transferredFiles(), moveToTrash() inside a Flatpak, and the destructor wait for replies. Main thread only.
class DBusDesktop : public Desktop {
    Q_OBJECT

public:
    /// `applicationName` is passed to the services, which may show it to the user; `desktopEntry` is the
    /// application's reverse-DNS identifier.
    DBusDesktop(QString applicationName, QString desktopEntry, bool insideFlatpak = isInsideFlatpak());
    /// Waits until pending messages were delivered, at most two seconds for each.
    ~DBusDesktop() override;

    quint32 acquireSleepAssertion(const QString& reason) override;
    void releaseSleepAssertion(quint32 assertion) override;
    /// Both use logind. Without a system bus they do nothing.
    void askWhetherAllowed(PowerAction action, QObject* context,
                           const std::function<void(bool)>& handler) override;
    void carryOut(PowerAction action, QObject* context,
                  const std::function<void(const QString&)>& handler) override;
    void notify(const Notification& notification) override;
    void withdraw(const QString& group) override;
    void reveal(const QString& path) override { revealTogether({path}); }
    void revealTogether(const QStringList& paths) override;
    bool moveToTrash(const QString& path) override;
    /// Uses xdg-open, or the portal inside a Flatpak or if xdg-open is missing. Returns true if the address
    /// was handed over. For a mailto link, xdg-open's exit status is awaited for at most two seconds; the
    /// portal itself informs the user if no program is installed.
    bool openUrl(const QUrl& url) override;
    bool isSandboxed() const override { return m_insideFlatpak; }
    QStringList transferredFiles(const QString& key) override;
    void requestBackground(const QString& reason) override;
    void setLauncherProgress(std::optional<double> fraction) override;
    bool prefersDark() const override { return m_appearance.prefersDark(); }
    bool prefersReducedMotion() const override { return m_appearance.prefersReducedMotion(); }

    /// Call once, in programs that have windows; appearanceChanged() reports the user's preferences.
    void watchAppearance();

    static bool isInsideFlatpak();

private Q_SLOTS:
    void onActivationToken(uint id, const QString& token);
    void onActionInvoked(uint id, const QString& action);
    void onNotificationClosed(uint id, uint reason);
    void onPortalActionInvoked(const QString& id, const QString& action, const QVariantList& parameters);

private:
    /// An inhibitor of sleep: logind's descriptor, or the handle of the portal's request.
    struct Assertion {
        QDBusUnixFileDescriptor descriptor;
        QString portalRequest;
    };

    /// Notifications of which only the last one is on the screen.
    struct Group {
        uint shown = 0;                    ///< Its identifier; 0: none is.
        bool isAwaited = false;            ///< The reply with the identifier of the last one.
        std::optional<Notification> next;  ///< Waits for that reply.
        bool isWithdrawn = false;          ///< As soon as that reply is there.
    };

    /// Sends a message that must be delivered even if the application quits right afterwards.
    void sendForSure(const QDBusConnection& bus, const QDBusMessage& call,
                     const std::function<void(const QDBusPendingCall&)>& handler = {});
    void post(const QDBusConnection& bus, const Notification& notification);
    void onPosted(const Notification& notification, uint id);
    void closeShown(const QDBusConnection& bus, Group& group);
    void notifyThroughPortal(const QDBusConnection& bus, const Notification& notification);
    void activate(const QString& id, const QString& action);
    void revealThroughPortal(const QDBusConnection& bus, const QString& path);
    void listenForActions(QDBusConnection bus);

    const QString m_applicationName;
    const QString m_desktopEntry;
    const bool m_insideFlatpak;
    quint32 m_lastAssertion = 0;
    QHash<quint32, Assertion> m_assertions;
    /// Identifiers of notifications that can be clicked -> file, or empty: the main window.
    QHash<QString, QString> m_pathsOfNotifications;
    QHash<QString, Group> m_groups;
    int m_lastPortalNotification = 0;
    QString m_activationToken;  ///< Of the click that follows.
    bool m_isListening = false;
    std::optional<double> m_launcherProgress;
    DesktopAppearance m_appearance;
    QSet<QDBusPendingCallWatcher*> m_pendingCalls;
};
