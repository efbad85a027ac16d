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
/// desktop portal. A bus is connected to at the first use and only where one is announced; no reply is waited
/// for, but by openUrl().
class DBusDesktop : public Desktop {
    Q_OBJECT

public:
    /// `applicationName` is told to the services, which may show it to the user; `desktopEntry` is the
    /// application's reverse-DNS identifier.
    DBusDesktop(QString applicationName, QString desktopEntry, bool insideFlatpak = isInsideFlatpak());
    /// Waits, two seconds at the most, until what was posted and opened has arrived.
    ~DBusDesktop() override;

    quint32 acquireSleepAssertion(const QString& reason) override;
    void releaseSleepAssertion(quint32 assertion) override;
    void notify(const Notification& notification) override;
    void reveal(const QString& path) override;
    /// By xdg-open, inside a Flatpak and where that is missing by the portal. True: it was handed over. Of a
    /// mail it is waited for, two seconds at the most, whether a program takes it; where the portal has taken
    /// it, the portal tells the user when there is none.
    bool openUrl(const QUrl& url) override;
    bool isSandboxed() const override { return m_insideFlatpak; }
    void setLauncherProgress(std::optional<double> fraction) override;
    bool prefersDark() const override { return m_appearance.prefersDark(); }
    bool prefersReducedMotion() const override { return m_appearance.prefersReducedMotion(); }

    /// Call once, where the appearance matters; what the user prefers is told by appearanceChanged().
    void watchAppearance();

    static bool isInsideFlatpak();

private Q_SLOTS:
    void onActionInvoked(uint id, const QString& action);
    void onNotificationClosed(uint id, uint reason);
    void onPortalActionInvoked(const QString& id, const QString& action, const QVariantList& parameters);

private:
    /// What keeps the machine awake: logind's descriptor, or the handle of the portal's request.
    struct Assertion {
        QDBusUnixFileDescriptor descriptor;
        QString portalRequest;
    };

    /// For a message that has to arrive also when the application ends right after.
    void sendForSure(const QDBusConnection& bus, const QDBusMessage& call,
                     const std::function<void(const QDBusPendingCall&)>& handler = {});
    void notifyThroughPortal(const QDBusConnection& bus, const Notification& notification);
    void listenForActions(QDBusConnection bus);

    const QString m_applicationName;
    const QString m_desktopEntry;
    const bool m_insideFlatpak;
    quint32 m_lastAssertion = 0;
    QHash<quint32, Assertion> m_assertions;
    QHash<QString, QString> m_pathsOfNotifications;  ///< Notification's identifier -> file.
    int m_lastPortalNotification = 0;
    bool m_listens = false;
    std::optional<double> m_launcherProgress;
    DesktopAppearance m_appearance;
    QSet<QDBusPendingCallWatcher*> m_underWay;
};
