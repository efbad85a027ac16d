#pragma once

#include "media/FileReader.h"
#include "media/PresentationTimes.h"

namespace media {

/// A reading that is being written, within its limits.
struct Findings {
    Reading reading;
    Budget budget;

    /// Consecutive damage of the same fault is one piece.
    void addDamage(Fault fault, quint64 position, double from, double to);
    /// Null: there are enough.
    Track* addTrack();
    /// Adds how the file could be read.
    Reading finished(File& file);
};

/// A codec of which a frame is never empty and never all zeros, as far as is known. By Matroska's CodecID or
/// MP4's type.
bool isNeverZero(const std::string& codec);
/// Whether the frame has zeros only. Not so for very short ones, which may be right: silence, a repeated
/// picture. Looks at the first bytes, and at the others if those are zero.
bool isZeroFrame(FileReader& bytes, quint64 position, quint64 end);

/// UTF-8 up to the first zero byte, cut to the longest that a reading keeps.
std::string textAt(FileReader& bytes, quint64 position, quint64 length);

}  // namespace media
