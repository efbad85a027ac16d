#pragma once

#include "media/FileReader.h"

namespace media {

/// How the pictures of a track are cut into NAL units: each begins with its length.
struct NalFormat {
    unsigned lengthSize =
        0;  ///< In bytes, 1 to 4; 0: the track has no NAL units, or they begin with start codes.
    bool isHevc = false;
};

/// Of the decoder's configuration (the contents of "avcC" or "hvcC", Matroska's CodecPrivate).
NalFormat nalFormat(Bytes configuration, bool isHevc);
constexpr std::size_t kNalConfiguration = 23;  ///< So many bytes of it are looked at.

/// Whether the lengths of the units fill the frame from `position` to `end` and their headers are possible.
/// Up to 64 zeros behind the last unit are padding. `prefix` comes in front of the frame's bytes.
bool nalUnitsFill(FileReader& bytes, quint64 position, quint64 end, NalFormat format, Bytes prefix = {});

}  // namespace media
