#include "convert/proof/ReceiptText.h"

#include "convert/plan/PlanText.h"
#include "support/base/Texts.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace receipttext {

namespace {

QString number(quint64 count) {
    return QLocale().toString(static_cast<qulonglong>(count));
}

const ReceiptTrack* picture(const Receipt& receipt) {
    const auto found = std::find_if(receipt.tracks.cbegin(), receipt.tracks.cend(), [](const auto& track) {
        return track.plan.kind == PlannedTrack::Kind::Video;
    });
    return found == receipt.tracks.cend() ? nullptr : &*found;
}

QString counted(const ReceiptTrack& track) {
    const QString count = number(track.count.value_or(0));
    return track.sourceCount ? Texts::tr("%1 of %2").arg(count, number(*track.sourceCount)) : count;
}

QString whole(const Receipt& receipt) {
    const ReceiptTrack* track = picture(receipt);
    if (!track || !track->count) return Texts::tr("whole");
    return Texts::tr("whole: %1 pictures").arg(counted(*track));
}

/// Where a part is, unless it is spread over the movie or unknown.
QString place(const ReceiptDamage& part) {
    if (part.from <= 0) return {};
    return Texts::tr(" at %1").arg(position(part.from));
}

QString damaged(const Receipt& receipt) {
    if (receipt.damage.isEmpty()) return Texts::tr("Damaged");
    const ReceiptDamage& first = receipt.damage.first();
    const QString text = Texts::tr("Damaged%1: %2").arg(place(first), first.what);
    const auto further = static_cast<int>(receipt.damage.size() - 1);
    return further == 0 ? text : text + Texts::tr(" (and %n more)", nullptr, further);
}

QString trackLine(const ReceiptTrack& track) {
    using Kind = PlannedTrack::Kind;
    const bool isCopied = track.plan.action == PlannedTrack::Action::Copied;
    const QString action = isCopied ? Texts::tr("copied") : Texts::tr("now %1").arg(track.plan.to);
    if (track.plan.kind == Kind::Subtitle) return Texts::tr("%1 subtitle lines").arg(counted(track));
    if (track.plan.kind == Kind::Video) return Texts::tr("%1 pictures, %2").arg(counted(track), action);
    return Texts::tr("%1, %2").arg(plantext::name(track.plan), action);
}

QString damageLine(const ReceiptDamage& part) {
    const QString from = position(part.from);
    const QString to = position(part.to);
    if (part.to <= part.from || from == to) return Texts::tr("At %1: %2").arg(from, part.what);
    return Texts::tr("From %1 to %2: %3").arg(from, to, part.what);
}

}  // namespace

QString position(double seconds) {
    const auto whole = static_cast<qint64>(std::clamp(seconds, 0.0, 1e9));
    const auto two = [](qint64 value) { return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0')); };
    return QStringLiteral("%1:%2:%3").arg(whole / 3600).arg(two(whole / 60 % 60), two(whole % 60));
}

QString summary(const Receipt& receipt) {
    switch (receipt.verdict) {
        case ProofVerdict::Whole:
            return whole(receipt);
        case ProofVerdict::Damaged:
            return damaged(receipt);
        case ProofVerdict::Unknown:
            break;
    }
    return receipt.notes.isEmpty() ? Texts::tr("not compared")
                                   : Texts::tr("not compared: %1").arg(receipt.notes.first());
}

QString sentence(const Receipt& receipt) {
    const QString facts = details(receipt).join(Texts::tr("; "));
    switch (receipt.verdict) {
        case ProofVerdict::Whole:
            return Texts::tr("Whole: %1").arg(facts);
        case ProofVerdict::Damaged:
            return Texts::tr("Damaged: %1").arg(facts);
        case ProofVerdict::Unknown:
            break;
    }
    return Texts::tr("Not compared: %1").arg(facts);
}

QStringList details(const Receipt& receipt) {
    QStringList lines;
    for (const ReceiptTrack& track : receipt.tracks)
        lines.append(trackLine(track));
    if (receipt.chapterCount > 0) lines.append(Texts::tr("%n chapter(s)", nullptr, receipt.chapterCount));
    if (!receipt.leftOut.isEmpty()) lines.append(Texts::tr("left out: %1").arg(receipt.leftOut));
    if (receipt.outputBytes > 0) lines.append(QLocale().formattedDataSize(receipt.outputBytes, 1));
    return lines + damage(receipt) + receipt.notes;
}

QStringList damage(const Receipt& receipt) {
    QStringList lines;
    for (const ReceiptDamage& part : receipt.damage)
        lines.append(damageLine(part));
    return lines;
}

QString counts(const ReceiptTrack& track) {
    if (!track.count) return {};
    switch (track.plan.kind) {
        case PlannedTrack::Kind::Video:
            return Texts::tr("%1 pictures").arg(counted(track));
        case PlannedTrack::Kind::Subtitle:
            return Texts::tr("%1 subtitle lines").arg(counted(track));
        default:
            return {};
    }
}

}  // namespace receipttext
