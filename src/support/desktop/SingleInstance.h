#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class InstanceWay;

/// Keeps it at one running instance for each user session: a second start hands its files to the first one
/// and ends. They meet on the session bus, where also the desktop finds the instance, and on a local socket
/// where no bus is announced. Main thread only; lives shorter than the application object.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Role {
        First,       ///< This process is the one. It answers the others as soon as the event loop runs.
        HandedOver,  ///< Another instance took the paths and was asked to come to the front.
        NoAnswer,    ///< Another instance runs and hangs. It may still take the paths when it wakes.
    };

    /// `applicationId` is the reverse-DNS identifier, `patienceMilliseconds` what a first instance has for
    /// its answer.
    explicit SingleInstance(QString applicationId, int patienceMilliseconds = 5000);
    /// Gives up the place: the next start is a first one.
    ~SingleInstance() override;

    /// Call once. Returns at once where no other instance runs. `paths` are absolute and local; none: the
    /// other instance only comes to the front. Where processes cannot meet at all, each is a first one.
    Role begin(const QStringList& paths, const QString& token = tokenFromEnvironment());

    /// What the desktop gave this process to come to the front with; may be empty. A graphical application
    /// object takes it out of the environment, so ask before that is made.
    static QString tokenFromEnvironment();

    /// What the sender of the last opened() or activated() gave along; may be empty.
    QString activationToken() const { return m_token; }

Q_SIGNALS:
    /// Come to the front and open these files; never empty. The sender has had its answer: take your time.
    void opened(const QStringList& paths);
    /// Come to the front.
    void activated();

private:
    void handlePaths(const QStringList& paths, const QString& token);
    /// Nothing: this way leads nowhere.
    std::optional<Role> settle(std::unique_ptr<InstanceWay> way, const QStringList& paths,
                               const QString& token);

    const QString m_applicationId;
    const int m_patienceMilliseconds;
    QString m_token;
    std::unique_ptr<InstanceWay> m_way;
};
