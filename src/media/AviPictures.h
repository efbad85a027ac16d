#pragma once

#include <QString>

#include <optional>
#include <stop_token>
#include <vector>

namespace media {

/// What an AVI file says about the number of pictures in one of its video streams.
struct AviPictures {
    int stream = 0;        ///< Among all streams of the file, from 0.
    quint64 declared = 0;  ///< By the stream's header.
    quint64 indexed = 0;   ///< Entries of the index (idx1, or OpenDML's ix##) with bytes.
    quint64 dropped = 0;   ///< Entries without: the picture before is shown again.
};

/// The video streams of an AVI file; none of other files. Null: it cannot be read, or it was cancelled. Reads
/// headers and indexes only; bounded, cancellable and callable as a reading of a movie.
std::optional<std::vector<AviPictures>> aviPictures(const QString& path, std::stop_token stop = {});

}  // namespace media
