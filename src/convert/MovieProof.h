#pragma once

#include "convert/RunProof.h"
#include "convert/proof/ProofWorker.h"

/// The proof of a movie's conversion: the comparison of its output with the plan and the source decides
/// whether the run succeeded. Main thread only.
class MovieProof : public RunProof {
    Q_OBJECT

public:
    /// `keepsDamaged`: a result with pictures is a success however much is missing.
    MovieProof(ProofWorker::Request request, ConversionPlan plan, bool keepsDamaged);

    void toolStarted(qint64 processId) override;
    void start(const RunEnding& soFar, const QString& output, const QString& said) override;

private:
    RunEnding endingFor(const proof::Result& result) const;

    ProofWorker m_worker;
    const ConversionPlan m_plan;
    qint64 m_outputBytes = 0;
    const bool m_keepsDamaged;
    RunEnding m_soFar;
};
