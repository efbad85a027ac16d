#include "convert/StatusText.h"

#include "support/base/Text.h"
#include "support/base/Texts.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kLongestSeconds = 18000;

/// The chosen track, and the last one of the others.
QString audioText(const QString& base, const StatusFacts& facts) {
    const auto& tracks = facts.audioTracks;
    if (facts.audioTrackIndex < 0 || facts.audioTrackIndex >= tracks.size()) return base;
    const QString text = Texts::tr("%1   Audio: %2").arg(base, tracks[facts.audioTrackIndex].description());
    if (tracks.size() < 2) return text;
    const qsizetype last = tracks.size() - 1;
    const qsizetype discarded = last == facts.audioTrackIndex ? last - 1 : last;
    return Texts::tr("%1 (Discarded: %2)").arg(text, tracks[discarded].description());
}

}  // namespace

double remainingSeconds(double progress, double elapsedSeconds) {
    const double remaining = 100 / progress * elapsedSeconds - elapsedSeconds;
    // Zero divided by zero is not a number; treat it like no progress.
    if (std::isnan(remaining)) return kLongestSeconds;
    return std::clamp(remaining, 0.0, kLongestSeconds);
}

QString stallText(double seconds) {
    constexpr int kMinute = 60;
    const int whole = static_cast<int>(seconds);
    if (whole < kMinute) return Texts::tr("no progress for %n second(s)", nullptr, whole);
    if (whole < 2 * kMinute) return Texts::tr("no progress for a minute");
    return Texts::tr("no progress for %n minute(s)", nullptr, whole / kMinute);
}

QString stateInfoString(const StatusFacts& facts) {
    const QString base = Texts::tr("Status: %1").arg(nameOfState(facts.state));
    switch (facts.state) {
        case JobState::Failed:
            return Texts::tr("%1   Click the arrow at the right to get more information.").arg(base);
        case JobState::Finished:
            return base + Texts::tr(" [Conversion took: %1]")
                              .arg(text::formattedTimeFromTimeInterval(facts.conversionSeconds));
        case JobState::Converting: {
            const QString text = audioText(base, facts);
            if (std::isnan(facts.elapsedSeconds)) return text;
            const double remaining = remainingSeconds(facts.progress, facts.elapsedSeconds);
            return Texts::tr("%1   ETA: %2").arg(text, text::formattedTimeFromTimeInterval(remaining));
        }
        case JobState::Queued:
        case JobState::Paused:
            return base;
    }
    return base;
}
