#include "support/desktop/InstanceOnBus.h"

#include "support/base/Log.h"
#include "support/desktop/Buses.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QUrl>

namespace {

constexpr auto kInterface = "org.freedesktop.Application";

QString tokenIn(const QVariantMap& platformData) {
    const QString token = platformData.value("activation-token").toString();
    return token.isEmpty() ? platformData.value("desktop-startup-id").toString() : token;
}

/// Not QUrl::fromLocalFile(), which parses "//movies/a" as a host and a path.
QString uriOf(const QString& path) {
    return QString::fromLatin1("file://" + QUrl::toPercentEncoding(path, "/"));
}

QStringList localPaths(const QStringList& uris) {
    QStringList paths;
    for (const QString& uri : uris) {
        const QUrl url(uri);
        const bool isHere = url.host().isEmpty() || url.host() == "localhost";
        const QString path = url.path(QUrl::FullyDecoded);
        if (url.isLocalFile() && isHere && path.startsWith(u'/')) {
            paths.append(path);
        } else {
            logError("Cannot open %@: not a local file", uri);
        }
    }
    return paths;
}

/// The org.freedesktop.Application interface, by which desktops start and activate applications.
class ApplicationInterface : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    ApplicationInterface(const QDBusConnection& connection, InstanceWay::Handler handler, QObject* object)
        : QDBusAbstractAdaptor(object), m_connection(connection), m_handler(std::move(handler)) {}

public Q_SLOTS:
    void Activate(const QVariantMap& platformData, const QDBusMessage& call) {
        answer(call);
        m_handler({}, tokenIn(platformData));
    }
    void Open(const QStringList& uris, const QVariantMap& platformData, const QDBusMessage& call) {
        answer(call);
        m_handler(localPaths(uris), tokenIn(platformData));
    }
    /// The application has no actions.
    void ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {}

private:
    /// Reply before handling the call: that may show a question, and the caller's wait is limited.
    void answer(const QDBusMessage& call) {
        call.setDelayedReply(true);
        if (call.isReplyRequired()) m_connection.send(call.createReply());
    }

    const QDBusConnection m_connection;
    const InstanceWay::Handler m_handler;
};

}  // namespace

InstanceOnBus::InstanceOnBus(const QDBusConnection& connection, QString applicationId, Handler handler)
    : m_connection(connection), m_applicationId(std::move(applicationId)) {
    // Register the object before the name, so that a caller who finds the name finds the object.
    new ApplicationInterface(m_connection, std::move(handler), &m_object);
    m_connection.registerObject(buses::objectPath(m_applicationId), &m_object,
                                QDBusConnection::ExportAdaptors);
}

InstanceOnBus::~InstanceOnBus() {
    if (m_isMine) m_connection.unregisterService(m_applicationId);
}

InstanceWay::Claim InstanceOnBus::claim() {
    const auto reply =
        m_connection.interface()->registerService(m_applicationId, QDBusConnectionInterface::DontQueueService,
                                                  QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid()) {
        logError("The session bus refuses the name %@: %@", m_applicationId, reply.error().message());
        return Claim::Impossible;
    }
    m_isMine = reply.value() == QDBusConnectionInterface::ServiceRegistered;
    return m_isMine ? Claim::Mine : Claim::Taken;
}

bool InstanceOnBus::handOver(const QStringList& paths, const QString& token, QDeadlineTimer deadline) {
    QVariantMap platformData;
    if (!token.isEmpty()) platformData = {{"activation-token", token}, {"desktop-startup-id", token}};
    QDBusMessage call = QDBusMessage::createMethodCall(m_applicationId, buses::objectPath(m_applicationId),
                                                       kInterface, paths.isEmpty() ? "Activate" : "Open");
    // If the instance has quit meanwhile, this process replaces it; the bus must not start another one.
    call.setAutoStartService(false);
    if (!paths.isEmpty()) {
        QStringList uris;
        for (const QString& path : paths)
            uris.append(uriOf(path));
        call << uris;
    }
    call << platformData;
    const int patience = qMax(1, static_cast<int>(deadline.remainingTime()));
    return m_connection.call(call, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

#include "InstanceOnBus.moc"
