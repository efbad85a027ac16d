#pragma once

#include "media/Reading.h"

namespace media {

enum class PatchResult {
    Unchanged,  ///< Nothing to do: fewer than two audio tracks, or it was so.
    Changed,
    NotAsRead,  ///< The file is not the one of the reading any more; nothing was written.
    Failed,     ///< Opening or writing failed; errno says why.
};

/// Makes the audio tracks alternatives of each other, of which the first is enabled: players that play every
/// enabled track would play two at once. Bytes are replaced in place: the file's size, its index and its
/// samples stay. `reading` is that of the file as it is.
PatchResult enableFirstAudioTrackOnly(const QString& path, const Reading& reading);

}  // namespace media
