#include "probe/MKVFileInfo.h"

#include "support/base/Files.h"
#include "support/base/Format.h"
#include "support/base/Text.h"
#include "tool/Tool.h"

#include <stdexcept>

namespace {

/// A report that is not valid UTF-8 is treated as empty.
QString reportText(const tool::Report& report) {
    return text::fromUtf8(report.output).value_or(QString());
}

}  // namespace

MKVFileInfo MKVFileInfo::fromFacts(const ReportFacts& facts, const FileUrl& url) {
    MKVFileInfo record;
    record.audioTrackInformation = facts.audioTracks;
    record.subtitleTrackIDs = facts.subtitleTrackIDs;
    record.informationString = facts.informationString();
    record.fileName = url.fileName();
    record.fileURL = url;
    record.videoTrackID = facts.videoTrackID.value_or(0);
    record.videoTrackCodec = facts.videoTrackCodec;
    record.runtimeSeconds = facts.runtimeSeconds;
    record.fileSize = files::fileSize(url.toUrl());
    record.contents = facts.contents;
    return record;
}

MKVFileInfo::Probe MKVFileInfo::probe(const FileUrl& url, const std::atomic<bool>* isCancelled) {
    const QString fileName = url.fileName();
    if (files::fileIsAlias(url.toUrl())) return {std::nullopt, {verdicts::alias(fileName)}};

    if (const QString problem = tool::problem(); !problem.isEmpty())
        return {std::nullopt, {verdicts::toolProblem(problem)}};
    const tool::Report report = tool::report(url.toLocalFile(), isCancelled);
    if (!report.started) {
        const QString reason = makeString("posix_spawn: %@", report.startError);
        return {std::nullopt, {verdicts::spawnFailed(reason, tool::path())}};
    }

    if (report.isLate) return {std::nullopt, {verdicts::tooSlow(fileName, tool::kReportLimitMinutes)}};
    if (!report.trouble.isEmpty()) return {std::nullopt, {verdicts::toolProblem(report.trouble)}};
    const ReportFacts facts = parseReport(reportText(report), settings::Snapshot::current(), fileName);
    if (facts.rejected) return {std::nullopt, facts.verdicts};
    MKVFileInfo record = fromFacts(facts, url);
    for (const Verdict& verdict : facts.verdicts)
        if (verdict.isDue()) record.warnings.append(verdict.message);
    return {std::move(record), facts.verdicts};
}

std::optional<MKVFileInfo> MKVFileInfo::initWithURL(const FileUrl& url) {
    Probe result = probe(url);
    verdicts::deliver(result.verdicts);
    return std::move(result.record);
}

qint32 MKVFileInfo::durationOfFile(const FileUrl& url) {
    const tool::Report report = tool::report(url.toLocalFile());
    const QString& reason = report.started ? report.trouble : report.startError;
    if (!reason.isEmpty()) throw std::runtime_error(reason.toStdString());
    return durationInReport(reportText(report));
}

void MKVFileInfo::shareWith(const MKVFileInfo& other) {
    const auto share = [](auto& mine, const auto& theirs) {
        if (mine == theirs) mine = theirs;
    };
    share(audioTrackInformation, other.audioTrackInformation);
    share(subtitleTrackIDs, other.subtitleTrackIDs);
    share(informationString, other.informationString);
    share(videoTrackCodec, other.videoTrackCodec);
    share(securityURL, other.securityURL);
    contents.shareWith(other.contents);
}

QString MKVFileInfo::description() const {
    const std::optional<QUrl> subtitles =
        subtitleFileURL ? std::optional(subtitleFileURL->toUrl()) : std::nullopt;
    const auto line = [](const char* name, const auto& value) {
        return makeString("\n%@: %@", QString(name), describe(value));
    };
    return line("audioTrackInformation", texts(audioTrackInformation)) +
           line("informationString", informationString) + line("fileName", fileName) +
           line("runtimeSeconds", runtimeSeconds) + line("fileSize", QString::number(fileSize)) +
           line("subtitleTrackIDs", subtitleTrackIDs) + line("subtitleFileURL", subtitles);
}
