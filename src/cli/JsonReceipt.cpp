#include "cli/JsonReceipt.h"

#include "cli/JsonRecords.h"

#include <QJsonArray>

namespace json {

namespace {

QString wordOf(ProofVerdict verdict) {
    switch (verdict) {
        case ProofVerdict::Whole:
            return "whole";
        case ProofVerdict::Damaged:
            return "damaged";
        case ProofVerdict::Unknown:
            break;
    }
    return "unknown";
}

QJsonValue number(const std::optional<quint64>& count) {
    return count ? QJsonValue(static_cast<qint64>(*count)) : QJsonValue();
}

QJsonValue number(const std::optional<double>& seconds) {
    return seconds ? QJsonValue(*seconds) : QJsonValue();
}

QJsonObject track(const ReceiptTrack& track) {
    return {{"stream", track.plan.output ? QJsonValue(*track.plan.output) : QJsonValue()},
            {"kind", word(track.plan.kind)},
            {"action", word(track.plan.action)},
            {"count", number(track.count)},
            {"sourceCount", number(track.sourceCount)},
            {"seconds", number(track.seconds)},
            {"sourceSeconds", number(track.sourceSeconds)}};
}

}  // namespace

QJsonObject receipt(const Receipt& receipt) {
    QJsonArray tracks;
    for (const ReceiptTrack& one : receipt.tracks)
        tracks.append(track(one));
    QJsonArray damage;
    for (const ReceiptDamage& part : receipt.damage)
        damage.append(QJsonObject{{"from", part.from}, {"to", part.to}, {"what", part.what}});
    return {{"verdict", wordOf(receipt.verdict)},
            {"tracks", tracks},
            {"damage", damage},
            {"notes", QJsonArray::fromStringList(receipt.notes)}};
}

}  // namespace json
