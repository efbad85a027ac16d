#pragma once

#include "support/base/FileLock.h"
#include "support/desktop/InstanceWay.h"

#include <QObject>

#include <optional>

class QLocalServer;
class QLocalSocket;

/// The way where there is no session bus: a locked file is the place, the socket beside it leads there. Both
/// lie in a folder that only this user can enter.
class InstanceOnSocket : public InstanceWay {
public:
    InstanceOnSocket(const QString& applicationId, Handler handler);
    ~InstanceOnSocket() override;

    Claim claim() override;
    bool handOver(const QStringList& paths, const QString& token, QDeadlineTimer deadline) override;

private:
    void serve(QLocalSocket* client);
    void read(QLocalSocket* client);

    const Handler m_handler;
    QString m_socketPath;
    std::optional<FileLock> m_lock;
    std::unique_ptr<QLocalServer> m_server;  ///< Deleted before the lock, under which its socket was made.
};
