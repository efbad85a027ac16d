#include "convert/proof/ExistingProof.h"

#include "convert/proof/Proof.h"
#include "media/SubtitleFile.h"

#include <algorithm>
#include <cmath>

namespace proof {

namespace {

constexpr double kLengthTolerance = 2;  // seconds

media::Reading tablesOf(const QString& output) {
    media::Options options;
    options.checkFrames = false;
    return media::read(output, options);
}

bool isFinished(const media::Reading& reading) {
    return reading.isComplete() && !reading.tracks.empty();
}

const media::Track* trackOf(const media::Reading& reading, int index) {
    const auto found = std::ranges::find(reading.tracks, index, &media::Track::index);
    return found == reading.tracks.end() ? nullptr : &*found;
}

bool isSame(const PlannedTrack& planned, const media::Reading& source, const media::Reading& output) {
    const auto position = static_cast<std::size_t>(planned.output.value_or(0));
    const media::Track* from = trackOf(source, planned.stream.value_or(-1));
    return from && position < output.tracks.size() && !from->digest.isEmpty() &&
           from->digest == output.tracks[position].digest;
}

/// Without a picture there would be nothing by which to recognise the movie.
bool areSame(const ConversionPlan& plan, const media::Reading& source, const media::Reading& output) {
    bool hasPicture = false;
    for (const PlannedTrack* track : plan.outputs()) {
        const bool isPicture = track->kind == PlannedTrack::Kind::Video;
        if (!isPicture && track->kind != PlannedTrack::Kind::Audio) continue;
        if (track->action != PlannedTrack::Action::Copied) continue;
        if (!isSame(*track, source, output)) return false;
        hasPicture |= isPicture;
    }
    return hasPicture;
}

}  // namespace

std::optional<Receipt> ofExisting(const Existing& existing, const std::stop_token& stop) {
    const media::Reading tables = tablesOf(existing.output);
    if (!isFinished(tables) || tables.container != media::Container::Mp4) return std::nullopt;
    if (tables.duration && existing.runtimeSeconds &&
        std::abs(*tables.duration - *existing.runtimeSeconds) > kLengthTolerance)
        return std::nullopt;
    media::Options options;
    options.digestsFrames = true;
    const media::Reading output = media::read(existing.output, options, stop);
    if (!output.isComplete() || output.damageTotal > 0) return std::nullopt;
    const media::Reading source = media::read(existing.source, options, stop);
    if (!source.isComplete() || !areSame(existing.plan, source, output)) return std::nullopt;
    std::optional<std::vector<media::Line>> lines;
    if (!existing.subtitleFile.isEmpty()) lines = media::readSubtitleFile(existing.subtitleFile, stop);
    Result result = compare({.plan = existing.plan,
                             .source = source,
                             .output = output,
                             .subtitleFile = lines,
                             .aviPictures = {},
                             .runtimeSeconds = existing.runtimeSeconds,
                             .toolOutput = {},
                             .sourcePath = existing.source});
    if (stop.stop_requested() || result.receipt.verdict != ProofVerdict::Whole) return std::nullopt;
    result.receipt.outputBytes = static_cast<qint64>(output.size);
    return std::move(result.receipt);
}

bool isUnfinished(const QString& output) {
    return !isFinished(tablesOf(output));
}

}  // namespace proof
