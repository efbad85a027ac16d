#include "app/queue/JobTexts.h"

#include "convert/CommandLineText.h"
#include "convert/ConversionJob.h"
#include "convert/StatusText.h"
#include "convert/plan/PlanText.h"
#include "convert/proof/ReceiptText.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>

namespace {

JobNote::Verdict verdictOf(const Receipt& receipt) {
    switch (receipt.verdict) {
        case ProofVerdict::Whole:
            return JobNote::Verdict::Whole;
        case ProofVerdict::Damaged:
            return JobNote::Verdict::Damaged;
        case ProofVerdict::Unknown:
            break;
    }
    return JobNote::Verdict::Unknown;
}

/// "1.4 GiB in Movies"
QString outputText(const ConversionJob& job, const std::optional<Receipt>& receipt) {
    const QString folder = QFileInfo(job.fileInfo().destinationURL.toLocalFile()).dir().dirName();
    if (!receipt || receipt->outputBytes <= 0) return Texts::tr("in %1").arg(folder);
    return Texts::tr("%1 in %2").arg(QLocale().formattedDataSize(receipt->outputBytes, 1), folder);
}

/// Damage comes first, as there may not be room for everything.
JobNote finishedNote(const ConversionJob& job) {
    const auto receipt = job.receipt();
    JobNote note;
    note.parts = {{outputText(job, receipt)}, {plantext::contents(job.plan())}};
    if (!receipt) return note;
    note.verdict = verdictOf(*receipt);
    const JobNote::Part verdict{receipttext::summary(*receipt), true};
    note.verdict == JobNote::Verdict::Damaged ? note.parts.prepend(verdict) : note.parts.append(verdict);
    return note;
}

QStringList receiptLines(const Receipt& receipt) {
    return QStringList(receipttext::summary(receipt)) + receipttext::details(receipt);
}

}  // namespace

QString JobNote::text() const {
    QStringList texts;
    for (const Part& part : parts)
        texts.append(part.text);
    return texts.join(separator());
}

QString JobNote::verdictText() const {
    const auto found = std::ranges::find_if(parts, &Part::isVerdict);
    return found == parts.end() ? QString() : found->text;
}

QString jobStatus(const ConversionJob& job) {
    const double stalled = job.stalledSeconds();
    if (stalled == 0) return job.stateInfoString();
    const QString status = Texts::tr("Status: %1").arg(nameOfState(job.state()));
    return makeString("%@   %@", status, stallText(stalled));
}

JobNote jobNote(const ConversionJob& job) {
    JobNote note;
    switch (job.state()) {
        case JobState::Finished:
            note = finishedNote(job);
            break;
        case JobState::Queued:
            note.parts = {{plantext::summary(job.plan())}};
            break;
        case JobState::Failed:
            note.verdict = JobNote::Verdict::Failed;
            note.parts = {{job.explanation().inShort(), true}};
            break;
        case JobState::Converting:
        case JobState::Paused:
            break;
    }
    return note;
}

QString commandLines(const QList<ConversionJob*>& jobs) {
    QStringList lines;
    for (const ConversionJob* job : jobs) {
        const QStringList arguments = job->arguments();
        if (!arguments.isEmpty()) lines.append(commandLineText(arguments));
    }
    return lines.join(u'\n');
}

QString receiptTexts(const QList<ConversionJob*>& jobs) {
    QStringList parts;
    for (const ConversionJob* job : jobs) {
        if (const auto receipt = job->receipt())
            parts.append(job->fileInfo().fileName + u'\n' + receiptLines(*receipt).join(u'\n') + u'\n');
    }
    return parts.join(u'\n');
}
