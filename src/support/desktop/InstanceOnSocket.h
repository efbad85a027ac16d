#pragma once

#include "support/base/FileLock.h"
#include "support/desktop/InstanceWay.h"

#include <QObject>

#include <optional>

class QLocalServer;
class QLocalSocket;

/// Finds the running instance without a session bus: the instance holds a file lock and listens on the socket
/// beside that file. Both are in a folder that only this user can access. Main thread only.
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
    std::unique_ptr<QLocalServer> m_server;  ///< Deleted before the lock, which protects its socket.
};
