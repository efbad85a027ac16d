#pragma once

#include "media/Reading.h"

namespace media {

/// The events of a text subtitle file (SubRip, ASS/SSA, MicroDVD, SAMI, SubViewer, WebVTT), ordered by their
/// start, those that the tool takes from it. The format is found by looking at the text. UTF-8, UTF-16 with a
/// byte-order mark and every encoding that contains ASCII. Null: another format, more than 50,000 events, or
/// something that the tool could read otherwise. Bounded, cancellable and callable as a reading of a movie.
std::optional<std::vector<Line>> readSubtitleFile(const QString& path, std::stop_token stop = {});

}  // namespace media
