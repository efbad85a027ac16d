#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QString>

#include <optional>

/// The D-Bus connections. A bus is used only if the environment announces its address: connecting to any
/// other could start one, or wait for an X server. Main thread only.
namespace buses {

/// Null if no bus is announced or the connection fails.
std::optional<QDBusConnection> session();
std::optional<QDBusConnection> system();

/// Path of the D-Bus object that represents the application with this reverse-DNS identifier.
QString objectPath(const QString& applicationId);

/// Calls `handler` with the reply or the error from the event loop; never after `context` was deleted. -1:
/// the bus's usual timeout.
template <typename Handler>
void whenAnswered(const QDBusConnection& connection, const QDBusMessage& call, QObject* context,
                  Handler handler, int timeoutMilliseconds = -1) {
    auto* watcher = new QDBusPendingCallWatcher(connection.asyncCall(call, timeoutMilliseconds), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [handler](QDBusPendingCallWatcher* finished) {
                         handler(*finished);
                         finished->deleteLater();
                     });
}

}  // namespace buses
