#pragma once

#include <QString>

#include <optional>

namespace media {

/// Whether the file ends in the middle of a unit of its container, so that it was cut off: MPEG transport and
/// program streams, Ogg, FLV and AVI. False for other formats and where the end says nothing; empty: it
/// cannot be read. Reads at most 128 KiB; any input is allowed. Any thread.
std::optional<bool> endsInsideUnit(const QString& path);

/// Whether the file begins as an MPEG program stream (MPG, VOB), whose video has a constant frame rate.
/// Empty: it cannot be read. Any thread.
std::optional<bool> isProgramStream(const QString& path);

}  // namespace media
