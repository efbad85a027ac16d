#include "app/queue/JobDetails.h"

#include "convert/CommandLineText.h"
#include "convert/ConversionJob.h"
#include "convert/StatusText.h"
#include "convert/plan/PlanLines.h"
#include "convert/plan/PlanText.h"
#include "convert/proof/ReceiptText.h"
#include "support/base/Texts.h"

#include <QLocale>

namespace {

using Kind = DetailMessage::Kind;

Kind kindOf(ProofVerdict verdict) {
    switch (verdict) {
        case ProofVerdict::Whole:
            return Kind::Good;
        case ProofVerdict::Damaged:
            return Kind::Warning;
        case ProofVerdict::Unknown:
            break;
    }
    return Kind::Plain;
}

void addReceipt(QList<DetailMessage>& messages, const Receipt& receipt) {
    const QStringList damage = receipttext::damage(receipt);
    // The summary has the only one; of several it has the first.
    if (damage.size() < 2) messages.append({kindOf(receipt.verdict), receipttext::summary(receipt)});
    for (const QString& line : damage) {
        if (damage.size() > 1) messages.append({Kind::Warning, line});
    }
    for (const QString& note : receipt.notes) {
        const bool isInSummary = receipt.verdict == ProofVerdict::Unknown && note == receipt.notes.first();
        if (!isInSummary) messages.append({Kind::Plain, note});
    }
}

QList<DetailMessage> messagesOf(const ConversionJob& job) {
    QList<DetailMessage> messages;
    if (job.state() == JobState::Failed) messages.append({Kind::Problem, job.explanation().message});
    if (const auto receipt = job.receipt()) addReceipt(messages, *receipt);
    for (const QString& warning : job.fileInfo().warnings)
        messages.append({Kind::Warning, warning});
    return messages;
}

/// The tracks of the receipt are those of the output, in their order.
void addCounts(QList<DetailTrack>& tracks, const ConversionPlan& plan, const Receipt& receipt) {
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        const std::optional<int> output = plan.tracks[i].output;
        if (!output || *output >= receipt.tracks.size()) continue;
        const ReceiptTrack& proven = receipt.tracks[*output];
        if (proven.plan.kind != plan.tracks[i].kind) continue;
        tracks[i].remark = receipttext::counts(proven);
        tracks[i].isIncomplete = proven.count && proven.sourceCount && *proven.count < *proven.sourceCount;
    }
}

QList<DetailTrack> tracksOf(const ConversionJob& job) {
    if (job.isUnprobed()) return {};
    const ConversionPlan plan = job.plan();
    QList<DetailTrack> tracks;
    for (const PlannedTrack& track : plan.tracks) {
        tracks.append({.kind = plantext::kind(track),
                       .source = trackName(track),
                       .outcome = plantext::outcome(track),
                       .remark = track.reason,
                       .isLeftOut = track.action == PlannedTrack::Action::LeftOut,
                       .isIncomplete = false});
    }
    if (const auto receipt = job.receipt()) addCounts(tracks, plan, *receipt);
    if (plan.carriesChapters) {
        tracks.append({.kind = Texts::tr("Chapters"),
                       .source = QLocale().toString(plan.chapterCount),
                       .outcome = Texts::tr("copied"),
                       .remark = {},
                       .isLeftOut = false,
                       .isIncomplete = false});
    }
    if (!plan.title.isEmpty()) {
        tracks.append({.kind = Texts::tr("Title"),
                       .source = plan.title.simplified(),
                       .outcome = Texts::tr("copied"),
                       .remark = {},
                       .isLeftOut = false,
                       .isIncomplete = false});
    }
    return tracks;
}

QString sizeText(qint64 bytes) {
    return bytes > 0 ? QLocale().formattedDataSize(bytes, 1) : QString();
}

QList<DetailFile> filesOf(const ConversionJob& job) {
    const MKVFileInfo& info = job.fileInfo();
    const auto receipt = job.receipt();
    QList<DetailFile> files = {
        {Texts::tr("From"), info.fileURL.toLocalFile(), sizeText(static_cast<qint64>(info.fileSize))}};
    if (info.subtitleFileURL) files.append({Texts::tr("With"), info.subtitleFileURL->toLocalFile(), {}});
    files.append({Texts::tr("To"), info.destinationURL.toLocalFile(),
                  receipt ? sizeText(receipt->outputBytes) : QString()});
    return files;
}

QString lineOf(const DetailTrack& track) {
    const QString line = Texts::tr("%1: %2").arg(
        track.kind, Texts::tr("%1 %2", "a track and what it becomes").arg(track.source, track.outcome));
    return track.remark.isEmpty() ? line : Texts::tr("%1 (%2)").arg(line, track.remark);
}

QString lineOf(const DetailFile& file) {
    const QString line = Texts::tr("%1: %2").arg(file.role, file.path);
    return file.size.isEmpty() ? line : Texts::tr("%1 (%2)").arg(line, file.size);
}

}  // namespace

JobDetails jobDetails(const ConversionJob& job) {
    return {.name = job.fileInfo().fileName,
            .state = nameOfState(job.state()),
            .messages = messagesOf(job),
            .tracks = tracksOf(job),
            .files = filesOf(job),
            .commandLine = job.arguments().isEmpty() ? QString() : commandLineText(job.arguments()),
            .said = job.jobOutput()};
}

QString plainText(const JobDetails& details) {
    QStringList lines = {details.name, Texts::tr("Status: %1").arg(details.state)};
    for (const DetailMessage& message : details.messages)
        lines.append(message.text);
    const auto add = [&](const QString& title, const QStringList& section) {
        if (!section.isEmpty()) lines += QStringList{QString(), title} + section;
    };
    QStringList tracks;
    for (const DetailTrack& track : details.tracks)
        tracks.append(lineOf(track));
    QStringList files;
    for (const DetailFile& file : details.files)
        files.append(lineOf(file));
    add(Texts::tr("Tracks"), tracks);
    add(Texts::tr("Files"), files);
    if (!details.commandLine.isEmpty()) add(Texts::tr("Command line"), {details.commandLine});
    if (!details.said.isEmpty()) add(Texts::tr("What the tool printed"), {details.said});
    return lines.join(u'\n') + u'\n';
}
