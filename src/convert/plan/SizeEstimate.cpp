#include "convert/plan/SizeEstimate.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr double kBitsPerByte = 8;
constexpr double kBitsPerKilobit = 1000;
constexpr double kUsualRate = 160;  // kb/s, where a level of quality is chosen

/// Bits per second.
double rateOf(const PlannedAudio& audio) {
    static const QRegularExpression kKilobits("^(\\d+)k$");
    const auto match = kKilobits.match(audio.rate);
    return (match.hasMatch() ? match.captured(1).toDouble() : kUsualRate) * kBitsPerKilobit;
}

bool isCopied(const ConversionPlan& plan, int stream) {
    return std::ranges::any_of(plan.tracks, [&](const PlannedTrack& track) {
        return track.stream == stream && track.action == PlannedTrack::Action::Copied;
    });
}

}  // namespace

std::optional<quint64> estimatedOutputBytes(const MKVFileInfo& info, const ConversionPlan& plan) {
    if (info.fileSize == 0 || info.runtimeSeconds.value_or(0) <= 0) return std::nullopt;
    const double bytesPerRate = *info.runtimeSeconds / kBitsPerByte;
    auto bytes = static_cast<double>(info.fileSize);
    for (const MovieStream& stream : info.contents.streams) {
        if (!isCopied(plan, stream.index)) bytes -= static_cast<double>(stream.bitRate) * bytesPerRate;
    }
    bytes = std::max(bytes, 0.0);
    for (const PlannedTrack& track : plan.tracks) {
        if (track.action == PlannedTrack::Action::Converted && track.audio)
            bytes += rateOf(*track.audio) * bytesPerRate;
    }
    return static_cast<quint64>(bytes);
}
