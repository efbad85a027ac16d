#include "support/desktop/DesktopAppearance.h"

#include "support/desktop/Buses.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingReply>
#include <QMap>
#include <QVariantMap>

#include <utility>

namespace {

constexpr auto kService = "org.freedesktop.portal.Desktop";
constexpr auto kPath = "/org/freedesktop/portal/desktop";
constexpr auto kInterface = "org.freedesktop.portal.Settings";
constexpr auto kAppearance = "org.freedesktop.appearance";
constexpr auto kInterfaceSettings = "org.gnome.desktop.interface";

using Groups = QMap<QString, QVariantMap>;

/// Some portals wrap a value in two variants.
QVariant unpacked(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

void DesktopAppearance::watch(QDBusConnection connection) {
    qDBusRegisterMetaType<Groups>();
    qRegisterMetaType<QDBusVariant>();  // Otherwise connect() does not find the slot with this type.
    // No service name: with a name, QtDBus blocks to look up its owner first.
    connection.connect({}, kPath, kInterface, "SettingChanged", this,
                       SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    connection.connect({}, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged", {kService},
                       {}, this, SLOT(onOwnerChanged(QString, QString, QString)));
    requestSettings(connection);
}

void DesktopAppearance::requestSettings(const QDBusConnection& connection) {
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, "ReadAll");
    call.setArguments({QStringList{kAppearance, kInterfaceSettings}});
    call.setAutoStartService(false);
    buses::whenAnswered(connection, call, this, [this](const QDBusPendingCall& answer) {
        const QDBusPendingReply<Groups> reply = answer;
        if (reply.isError()) return;
        bool isNew = false;
        const Groups groups = reply.value();
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            for (auto entry = group->begin(); entry != group->end(); ++entry)
                isNew |= applySetting(group.key(), entry.key(), entry.value());
        }
        if (isNew) Q_EMIT changed();
    });
}

void DesktopAppearance::onSettingChanged(const QString& group, const QString& key,
                                         const QDBusVariant& value) {
    if (applySetting(group, key, value.variant())) Q_EMIT changed();
}

/// Queries a portal that starts after the application.
void DesktopAppearance::onOwnerChanged(const QString&, const QString&, const QString& now) {
    if (now.isEmpty()) return;
    if (const auto connection = buses::session()) requestSettings(*connection);
}

bool DesktopAppearance::applySetting(const QString& group, const QString& key, const QVariant& packed) {
    const QVariant value = unpacked(packed);
    if (group == kAppearance && key == "color-scheme") {
        const bool isDark = value.toUInt() == 1;
        return std::exchange(m_prefersDark, isDark) != isDark;
    }
    if (group == kInterfaceSettings && key == "enable-animations") {
        const bool isReduced = value.canConvert<bool>() && !value.toBool();
        return std::exchange(m_prefersReducedMotion, isReduced) != isReduced;
    }
    return false;
}
