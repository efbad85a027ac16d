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

QStringList fileLines(const MKVFileInfo& info) {
    QString source = info.fileURL.toLocalFile();
    if (info.fileSize > 0) {
        const auto bytes = static_cast<qint64>(info.fileSize);
        source = Texts::tr("%1 (%2)").arg(source, QLocale().formattedDataSize(bytes, 1));
    }
    QStringList lines = {Texts::tr("From: %1").arg(source)};
    if (info.subtitleFileURL) lines += Texts::tr("With: %1").arg(info.subtitleFileURL->toLocalFile());
    return lines << Texts::tr("To: %1").arg(info.destinationURL.toLocalFile());
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

QList<DetailSection> jobDetails(const ConversionJob& job) {
    QList<DetailSection> sections;
    const auto add = [&](const QString& title, const QStringList& lines, bool isVerbatim = false) {
        if (!lines.isEmpty()) sections.append({title, lines, isVerbatim});
    };
    add(Texts::tr("Files"), fileLines(job.fileInfo()));
    QStringList status = {jobStatus(job)};
    if (job.state() == JobState::Failed) status += job.explanation().message;
    add(Texts::tr("Status"), status);
    if (!job.isUnprobed()) add(Texts::tr("Plan"), plantext::lines(job.plan()));
    if (const auto receipt = job.receipt()) add(Texts::tr("Receipt"), receiptLines(*receipt));
    if (!job.arguments().isEmpty()) add(Texts::tr("Command line"), {commandLineText(job.arguments())}, true);
    if (!job.jobOutput().isEmpty()) add(Texts::tr("What the tool printed"), {job.jobOutput()}, true);
    return sections;
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
    QList<DetailSection> sections;
    for (const ConversionJob* job : jobs) {
        if (const auto receipt = job->receipt())
            sections.append({job->fileInfo().fileName, receiptLines(*receipt)});
    }
    return plainText(sections);
}

QString plainText(const QList<DetailSection>& sections) {
    QStringList parts;
    for (const DetailSection& section : sections)
        parts.append(section.title + u'\n' + section.lines.join(u'\n') + u'\n');
    return parts.join(u'\n');
}
