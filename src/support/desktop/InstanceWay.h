#pragma once

#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

#include <functional>

/// A place that only one process can have, and a way to whoever has it.
class InstanceWay {
public:
    enum class Claim { Mine, Taken, Impossible };
    /// Receives what others handed over; no paths: come to the front. Called from the event loop.
    using Handler = std::function<void(const QStringList& paths, const QString& token)>;

    InstanceWay() = default;
    virtual ~InstanceWay() = default;
    InstanceWay(const InstanceWay&) = delete;
    InstanceWay& operator=(const InstanceWay&) = delete;

    /// Mine: this process has the place until the object is deleted, and nothing that is handed over from now
    /// on is lost. Impossible: nobody can have it; why stands in the log.
    virtual Claim claim() = 0;

    /// Waits for the answer of whoever has the place. False: it did not answer, or nobody has the place yet
    /// or any more.
    virtual bool handOver(const QStringList& paths, const QString& token, QDeadlineTimer deadline) = 0;
};
