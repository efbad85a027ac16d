#include "support/desktop/Buses.h"

#include <QFileInfo>

namespace {

/// An empty variable announces no bus, and "autolaunch:" would start one.
bool isAnnounced(const char* variable, const QString& socket) {
    const QString address = qEnvironmentVariable(variable);
    return address.isEmpty() ? QFileInfo::exists(socket) : !address.contains("autolaunch:");
}

}  // namespace

std::optional<QDBusConnection> buses::session() {
    const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus";
    if (!isAnnounced("DBUS_SESSION_BUS_ADDRESS", socket)) return std::nullopt;
    QDBusConnection connection = QDBusConnection::sessionBus();
    return connection.isConnected() ? std::optional(connection) : std::nullopt;
}

std::optional<QDBusConnection> buses::system() {
    if (!isAnnounced("DBUS_SYSTEM_BUS_ADDRESS", "/run/dbus/system_bus_socket")) return std::nullopt;
    QDBusConnection connection = QDBusConnection::systemBus();
    return connection.isConnected() ? std::optional(connection) : std::nullopt;
}

QString buses::objectPath(const QString& applicationId) {
    return "/" + QString(applicationId).replace(u'.', u'/').replace(u'-', u'_');
}
