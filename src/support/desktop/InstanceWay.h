#pragma once

#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

#include <functional>

/// A way to find the running instance: a claim that only one process can hold, and a channel to the process
/// that holds it. Main thread only.
class InstanceWay {
public:
    enum class Claim { Mine, Taken, Impossible };
    /// Receives the paths that another instance handed over; no paths: come to the front. Called from the
    /// event loop.
    using Handler = std::function<void(const QStringList& paths, const QString& token)>;

    InstanceWay() = default;
    virtual ~InstanceWay() = default;
    InstanceWay(const InstanceWay&) = delete;
    InstanceWay& operator=(const InstanceWay&) = delete;

    /// Mine: this process holds the claim until the object is deleted, and receives everything handed over
    /// from now on. Impossible: this mechanism does not work here; the reason is logged.
    virtual Claim claim() = 0;

    /// Sends the paths to the process that holds the claim and waits for its reply. Returns false if it did
    /// not reply or no process holds the claim.
    virtual bool handOver(const QStringList& paths, const QString& token, QDeadlineTimer deadline) = 0;
};
