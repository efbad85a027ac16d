#pragma once

#include "media/FileReader.h"
#include "media/NalUnits.h"
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

/// What holds for each frame of a codec, as far as is known.
struct FrameRules {
    bool isNeverZero = false;  ///< It is neither empty nor all zeros. Very short ones may be: silence.
    unsigned syncWord = 0;     ///< Its first two bytes; 0: not known.
};
/// By Matroska's CodecID or MP4's type.
FrameRules frameRules(const std::string& codec);

/// Looks at the first bytes of the frame from `position` to `end`, which is not empty, and at the headers of
/// its units. `prefix` comes in front of it.
std::optional<Fault> faultInFrame(FileReader& bytes, quint64 position, quint64 end, FrameRules rules,
                                  NalFormat units, Bytes prefix = {});

/// The reading with the damage of the frames that only `other`, a reading of the same file, looked at.
Reading withFramesOf(Reading reading, const Reading& other);

/// UTF-8 up to the first zero byte, cut to the longest that a reading keeps.
std::string textAt(FileReader& bytes, quint64 position, quint64 length);

}  // namespace media
