#pragma once

#include "support/desktop/InstanceWay.h"

#include <QDBusConnection>
#include <QObject>

/// The application's name on the session bus is the place; its object there can be called by anyone in the
/// session: by a second start, and by the desktop, which opens files so.
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
