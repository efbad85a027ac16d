#pragma once

#include "support/desktop/InstanceWay.h"

#include <QDBusConnection>
#include <QObject>

/// Finds the running instance by the application's name on the session bus. Its D-Bus object is called by a
/// second instance, and by the desktop to open files. Main thread only.
class InstanceOnBus : public InstanceWay {
public:
    InstanceOnBus(const QDBusConnection& connection, QString applicationId, Handler handler);
    ~InstanceOnBus() override;

    Claim claim() override;
    bool handOver(const QStringList& paths, const QString& token, QDeadlineTimer deadline) override;

private:
    QDBusConnection m_connection;
    const QString m_applicationId;
    QObject m_object;
    bool m_isMine = false;
};
