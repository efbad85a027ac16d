#pragma once

#include "media/FileReader.h"
#include "media/PresentationTimes.h"

#include <limits>

namespace media {

/// A reading that is being written, within its limits.
class Findings {
public:
    Reading reading;
    Budget budget;

    /// Damage of one fault with less than a second in between is one piece.
    void addDamage(Fault fault, quint64 position, double from, double to);
    /// The same where the end is not known yet.
    void openDamage(Fault fault, quint64 position, double from);
    /// Ends all open damage.
    void closeDamage(double to);
    /// Null: there are enough.
    Track* addTrack();
    /// Adds how the file could be read.
    Reading finished(File& file);

private:
    std::size_t m_firstOpen = std::numeric_limits<std::size_t>::max();
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
