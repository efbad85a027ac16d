#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class InstanceWay;

/// Allows one running instance per user session: a second instance hands its files to the first one and
/// quits. They communicate over the session bus, which the desktop uses, too, or over a local socket if no
/// bus is announced. Main thread only; destroy it before the application object.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Role {
        First,       ///< This process is the only instance. It replies to others once the event loop runs.
        HandedOver,  ///< Another instance received the paths and was asked to come to the front.
        NoAnswer,    ///< Another instance runs but hangs. It may still open the paths later.
    };

    /// `applicationId` is the reverse-DNS identifier; `patienceMilliseconds` is the time that a running
    /// instance has for its reply.
    explicit SingleInstance(QString applicationId, int patienceMilliseconds = 5000);
    /// Releases the claim: the next process that starts is the first instance.
    ~SingleInstance() override;

    /// Call once. Returns at once if no other instance runs. `paths` are absolute and local; if empty, the
    /// other instance only comes to the front. If no mechanism works here, every process is a first instance.
    Role begin(const QStringList& paths, const QString& token = tokenFromEnvironment());

    /// The desktop's token that allows this process to come to the front; may be empty. QGuiApplication
    /// removes it from the environment, so call this before creating that.
    static QString tokenFromEnvironment();

    /// The activation token that came with the last opened() or activated(); may be empty.
    QString activationToken() const { return m_token; }

Q_SIGNALS:
    /// Come to the front and open these files; never empty. The sender already has its reply.
    void opened(const QStringList& paths);
    /// Come to the front.
    void activated();

private:
    void handlePaths(const QStringList& paths, const QString& token);
    /// Null: this mechanism does not work here.
    std::optional<Role> negotiate(std::unique_ptr<InstanceWay> way, const QStringList& paths,
                                  const QString& token);

    const QString m_applicationId;
    const int m_patienceMilliseconds;
    QString m_token;
    std::unique_ptr<InstanceWay> m_way;
};
