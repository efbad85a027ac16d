#include "support/desktop/SingleInstance.h"

#include "support/desktop/Buses.h"
#include "support/desktop/InstanceOnBus.h"
#include "support/desktop/InstanceOnSocket.h"

#include <QThread>

SingleInstance::SingleInstance(QString applicationId, int patienceMilliseconds)
    : m_applicationId(std::move(applicationId)), m_patienceMilliseconds(patienceMilliseconds) {}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::tokenFromEnvironment() {
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qEnvironmentVariable("DESKTOP_STARTUP_ID") : token;
}

SingleInstance::Role SingleInstance::begin(const QStringList& paths, const QString& token) {
    const auto handler = [this](const QStringList& handedOver, const QString& itsToken) {
        handlePaths(handedOver, itsToken);
    };
    std::optional<Role> role;
    if (const auto connection = buses::session())
        role =
            negotiate(std::make_unique<InstanceOnBus>(*connection, m_applicationId, handler), paths, token);
    if (!role) role = negotiate(std::make_unique<InstanceOnSocket>(m_applicationId, handler), paths, token);
    return role.value_or(Role::First);
}

std::optional<SingleInstance::Role> SingleInstance::negotiate(std::unique_ptr<InstanceWay> way,
                                                              const QStringList& paths,
                                                              const QString& token) {
    // The first instance may be starting, and not reachable yet, or quitting, so that the claim becomes free:
    // retry.
    constexpr unsigned long kStepMilliseconds = 10;
    const QDeadlineTimer deadline(m_patienceMilliseconds);
    while (true) {
        const InstanceWay::Claim claim = way->claim();
        if (claim == InstanceWay::Claim::Impossible) return std::nullopt;
        if (claim == InstanceWay::Claim::Mine) {
            m_way = std::move(way);
            return Role::First;
        }
        if (way->handOver(paths, token, deadline)) return Role::HandedOver;
        if (deadline.hasExpired()) return Role::NoAnswer;
        QThread::msleep(kStepMilliseconds);
    }
}

void SingleInstance::handlePaths(const QStringList& paths, const QString& token) {
    m_token = token;
    if (paths.isEmpty()) {
        Q_EMIT activated();
    } else {
        Q_EMIT opened(paths);
    }
}
