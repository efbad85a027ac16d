#include "support/desktop/InstanceOnSocket.h"

#include "support/base/Log.h"

#include <QDataStream>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTimer>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// A message: magic, length, and that many bytes of texts: the token, then the paths. The reply: the magic.
constexpr quint32 kMagic = 0x5276'0001;
constexpr qint64 kHeaderSize = 8;
constexpr qint64 kPayloadLimit = 16 * 1024 * 1024;
constexpr int kSilenceLimitMilliseconds = 10'000;
constexpr auto kSocketEnding = ".socket";
constexpr qsizetype kLongestAddress = 107;  ///< The kernel's limit for a socket's path, in bytes.

struct Message {
    QString token;
    QStringList paths;
};

/// Fixed, because instances of different versions may communicate.
constexpr auto kStreamVersion = QDataStream::Qt_6_0;

QByteArray framed(const Message& message) {
    QByteArray payload;
    QDataStream content(&payload, QIODevice::WriteOnly);
    content.setVersion(kStreamVersion);
    content << message.token;
    for (const QString& path : message.paths)
        content << path;
    QByteArray frame;
    QDataStream header(&frame, QIODevice::WriteOnly);
    header << kMagic << static_cast<quint32>(payload.size());
    return payload.size() > kPayloadLimit ? QByteArray() : frame + payload;
}

/// Reads text by text: QStringList would allocate the announced length unchecked.
std::optional<Message> parsed(const QByteArray& payload) {
    QDataStream content(payload);
    content.setVersion(kStreamVersion);
    Message message;
    content >> message.token;
    while (content.status() == QDataStream::Ok && !content.atEnd()) {
        QString path;
        content >> path;
        if (!path.startsWith(u'/')) return std::nullopt;
        message.paths.append(path);
    }
    return content.status() == QDataStream::Ok ? std::optional(message) : std::nullopt;
}

/// Whether no other user can create or replace files in the folder.
bool isOursAlone(const QByteArray& folder) {
    struct stat status = {};
    return ::lstat(folder.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// $XDG_RUNTIME_DIR, else a folder below /tmp, created if it is missing. Null if that folder is not
/// exclusively ours.
std::optional<QString> runtimeFolder(const QString& applicationId) {
    const QByteArray ofSession = qgetenv("XDG_RUNTIME_DIR");
    const qsizetype longestName = applicationId.toUtf8().size() + qsizetype(qstrlen(kSocketEnding)) + 1;
    if (ofSession.startsWith('/') && ofSession.size() + longestName <= kLongestAddress &&
        isOursAlone(ofSession))
        return QFile::decodeName(ofSession);
    const QByteArray own = "/tmp/" + applicationId.toUtf8() + "-" + QByteArray::number(::geteuid());
    ::mkdir(own.constData(), S_IRWXU);
    return isOursAlone(own) ? std::optional(QFile::decodeName(own)) : std::nullopt;
}

}  // namespace

InstanceOnSocket::InstanceOnSocket(const QString& applicationId, Handler handler)
    : m_handler(std::move(handler)) {
    const auto folder = runtimeFolder(applicationId);
    if (!folder) {
        logError("There is no safe folder for the socket of %@", applicationId);
        return;
    }
    const QString lockPath = *folder + "/" + applicationId + ".lock";
    m_socketPath = *folder + "/" + applicationId + kSocketEnding;
    // FileLock does not distinguish a lock file that cannot be created from a lock held by another process.
    if (QFile(lockPath).open(QIODevice::ReadWrite)) {
        m_lock.emplace(lockPath);
    } else {
        logError("Cannot write %@", lockPath);
    }
}

InstanceOnSocket::~InstanceOnSocket() = default;

InstanceWay::Claim InstanceOnSocket::claim() {
    if (!m_lock) return Claim::Impossible;
    if (!m_lock->lock(0)) return Claim::Taken;
    QLocalServer::removeServer(m_socketPath);  // Left by an instance that was killed.
    m_server = std::make_unique<QLocalServer>();
    QObject::connect(m_server.get(), &QLocalServer::newConnection, m_server.get(), [this] {
        while (QLocalSocket* client = m_server->nextPendingConnection())
            serve(client);
    });
    if (m_server->listen(m_socketPath)) return Claim::Mine;
    logError("Cannot listen at %@: %@", m_socketPath, m_server->errorString());
    m_server.reset();
    m_lock.reset();
    return Claim::Impossible;
}

void InstanceOnSocket::serve(QLocalSocket* client) {
    client->setReadBufferSize(kHeaderSize + kPayloadLimit);
    QObject::connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    QObject::connect(client, &QLocalSocket::readyRead, m_server.get(), [this, client] { read(client); });
    QTimer::singleShot(kSilenceLimitMilliseconds, client, &QLocalSocket::abort);
}

void InstanceOnSocket::read(QLocalSocket* client) {
    const QByteArray head = client->peek(kHeaderSize);
    if (head.size() < kHeaderSize) return;
    quint32 magic = 0;
    quint32 size = 0;
    QDataStream(head) >> magic >> size;
    const bool isOurs = magic == kMagic && size <= kPayloadLimit;
    if (isOurs && client->bytesAvailable() < kHeaderSize + size) return;
    QObject::disconnect(client, &QLocalSocket::readyRead, nullptr, nullptr);
    client->skip(kHeaderSize);
    const auto message = isOurs ? parsed(client->read(size)) : std::nullopt;
    if (!message) {
        logError("Ignored a malformed message at %@", m_socketPath);
        client->abort();
        return;
    }
    // Reply before handling the message: that may show a question, and the sender's wait is limited.
    QDataStream(client) << kMagic;
    client->flush();
    client->disconnectFromServer();
    m_handler(message->paths, message->token);
}

bool InstanceOnSocket::handOver(const QStringList& paths, const QString& token, QDeadlineTimer deadline) {
    const auto remaining = [&deadline] { return static_cast<int>(deadline.remainingTime()); };
    const QByteArray frame = framed({token, paths});
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (frame.isEmpty() || !socket.waitForConnected(remaining())) return false;
    socket.write(frame);
    while (socket.bytesAvailable() < qint64(sizeof(kMagic))) {
        if (!socket.waitForReadyRead(remaining())) return false;
    }
    quint32 answer = 0;
    QDataStream(&socket) >> answer;
    return answer == kMagic;
}
