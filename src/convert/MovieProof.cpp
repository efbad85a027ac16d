#include "convert/MovieProof.h"

#include <QFileInfo>

#include <algorithm>

namespace {

bool holdsPictures(const Receipt& receipt) {
    return std::any_of(receipt.tracks.cbegin(), receipt.tracks.cend(), [](const ReceiptTrack& track) {
        return track.plan.kind == PlannedTrack::Kind::Video && track.count.value_or(0) > 0;
    });
}

}  // namespace

MovieProof::MovieProof(ProofWorker::Request request, ConversionPlan plan, bool keepsDamaged)
    : m_worker(std::move(request)), m_plan(std::move(plan)), m_keepsDamaged(keepsDamaged) {
    connect(&m_worker, &ProofWorker::proved, this,
            [this](const proof::Result& result) { Q_EMIT finished(endingFor(result)); });
}

void MovieProof::toolStarted(qint64 processId) {
    m_worker.toolStarted(processId);
}

void MovieProof::start(const RunEnding& soFar, const QString& output, const QString& said) {
    m_soFar = soFar;
    m_outputBytes = QFileInfo(output).size();
    m_worker.prove(output, m_plan, said);
}

RunEnding MovieProof::endingFor(const proof::Result& result) const {
    RunEnding ending = m_soFar;
    ending.receipt = result.receipt;
    ending.receipt->outputBytes = m_outputBytes;
    ending.signs = result.signs;
    const bool isKept = result.receipt.mayBeKept || (m_keepsDamaged && holdsPictures(result.receipt));
    if (isKept) {
        ending.kind = RunEnding::Kind::Succeeded;
    } else if (ending.succeeded()) {
        ending.kind = RunEnding::Kind::MuchLost;
    }
    return ending;
}
