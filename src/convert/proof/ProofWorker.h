#pragma once

#include "convert/proof/Proof.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

/// Proves the output of one conversion in a thread of its own. While the tool runs, a Matroska source is read
/// shortly behind it, so that its pages are still in memory; the output is read when the tool has ended. Main
/// thread only. Destroying it abandons the work without waiting for a read that is under way.
class ProofWorker : public QObject {
    Q_OBJECT

public:
    struct Request {
        QString source;
        QString subtitleFile;  ///< Empty: there is none.
        std::optional<qint32> runtimeSeconds;
    };

    explicit ProofWorker(Request request, QObject* parent = nullptr);
    ~ProofWorker() override;

    /// The tool reads the source now. `processId` is its process.
    void toolStarted(qint64 processId);
    /// The tool has ended with status 0: compares `output` with the plan and the source; proved() follows.
    /// May be called again after another run of the tool.
    void prove(const QString& output, const ConversionPlan& plan, const QString& toolOutput);

Q_SIGNALS:
    void proved(const proof::Result& result);

private:
    struct Work;
    const std::shared_ptr<Work> m_work;
};
