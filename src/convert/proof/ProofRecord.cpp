#include "convert/proof/ProofRecord.h"

#include "support/base/FileSteps.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace proofrecord {

namespace {

constexpr int kVersion = 1;
constexpr qsizetype kMost = 2048;  // Some file systems keep all attributes of a file in one block.

// The receipt's words are not stored: they follow from the plan.

QJsonValue numberOrNull(const std::optional<quint64>& number) {
    return number ? QJsonValue(static_cast<qint64>(*number)) : QJsonValue();
}

QJsonValue numberOrNull(const std::optional<double>& number) {
    return number ? QJsonValue(*number) : QJsonValue();
}

QJsonArray encoded(const ReceiptTrack& track) {
    return {track.plan.output.value_or(0),       static_cast<int>(track.plan.kind),
            static_cast<int>(track.plan.action), numberOrNull(track.count),
            numberOrNull(track.sourceCount),     numberOrNull(track.seconds),
            numberOrNull(track.sourceSeconds)};
}

std::optional<quint64> count(const QJsonValue& value) {
    return value.isDouble() ? std::optional(static_cast<quint64>(value.toInteger())) : std::nullopt;
}

std::optional<double> seconds(const QJsonValue& value) {
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

/// Null: not written by us; whoever may write to the folder may have set the attribute.
std::optional<ReceiptTrack> decoded(const QJsonArray& fields) {
    const int kind = fields.at(1).toInt(-1);
    const int action = fields.at(2).toInt(-1);
    if (kind < 0 || kind > static_cast<int>(PlannedTrack::Kind::Data)) return std::nullopt;
    if (action < 0 || action > static_cast<int>(PlannedTrack::Action::LeftOut)) return std::nullopt;
    ReceiptTrack track;
    track.plan.output = fields.at(0).toInt();
    track.plan.kind = static_cast<PlannedTrack::Kind>(kind);
    track.plan.action = static_cast<PlannedTrack::Action>(action);
    track.count = count(fields.at(3));
    track.sourceCount = count(fields.at(4));
    track.seconds = seconds(fields.at(5));
    track.sourceSeconds = seconds(fields.at(6));
    return track;
}

std::optional<FileStamp> stamp(const QJsonValue& value) {
    return FileStamp::fromText(value.toString().toLatin1());
}

}  // namespace

bool write(const QString& output, const FileStamp& source, const Receipt& receipt) {
    const auto compared = FileStamp::of(output);
    if (!compared) return false;
    QJsonArray tracks;
    for (const ReceiptTrack& track : receipt.tracks)
        tracks.append(encoded(track));
    QJsonObject record{{"version", kVersion},
                       {"source", QString::fromLatin1(source.toText())},
                       {"output", QString::fromLatin1(compared->toText())},
                       {"tracks", tracks}};
    QByteArray bytes = QJsonDocument(record).toJson(QJsonDocument::Compact);
    if (bytes.size() > kMost) {
        record.remove("tracks");
        bytes = QJsonDocument(record).toJson(QJsonDocument::Compact);
    }
    return filesteps::setAttribute(output, kName, bytes) == 0;
}

Found read(const QString& output, const QString& source) {
    const auto bytes = filesteps::attribute(output, kName);
    if (!bytes) return {};
    const QJsonObject record = QJsonDocument::fromJson(*bytes).object();
    const auto comparedSource = stamp(record.value("source"));
    const auto comparedOutput = stamp(record.value("output"));
    if (record.value("version").toInt() != kVersion || !comparedSource || !comparedOutput) return {};
    if (FileStamp::of(output) != comparedOutput) return {Finding::OutputChanged, {}};
    const auto present = FileStamp::of(source);
    if (!present || present->size != comparedSource->size) return {Finding::OtherSource, {}};
    if (*present != *comparedSource) return {Finding::SourceTouched, {}};
    Found found{Finding::Whole, {}};
    found.receipt.verdict = ProofVerdict::Whole;
    found.receipt.outputBytes = comparedOutput->size;
    const QJsonArray tracks = record.value("tracks").toArray();
    for (const auto& fields : tracks) {
        const auto track = decoded(fields.toArray());
        if (!track) return {};
        found.receipt.tracks.append(*track);
    }
    return found;
}

}  // namespace proofrecord
