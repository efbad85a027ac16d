#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QString>

#include <optional>

/// The buses, where they are announced. One that is not is never asked for: asking could start it, or wait
/// for an X server. Main thread only.
namespace buses {

/// Nothing: none is announced, or nobody answers there.
std::optional<QDBusConnection> session();
std::optional<QDBusConnection> system();

/// The object that stands for the application with this reverse-DNS identifier.
QString objectPath(const QString& applicationId);

/// Calls `handler` with the answer or the error, unless `context` is gone by then.
template <typename Handler>
void whenAnswered(const QDBusConnection& connection, const QDBusMessage& call, QObject* context,
                  Handler handler) {
    auto* watcher = new QDBusPendingCallWatcher(connection.asyncCall(call), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [handler](QDBusPendingCallWatcher* finished) {
                         handler(*finished);
                         finished->deleteLater();
                     });
}

}  // namespace buses
