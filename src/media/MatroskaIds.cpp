#include "media/MatroskaIds.h"

#include <algorithm>
#include <iterator>

namespace media::matroska {

bool isTopLevel(quint32 id) {
    static constexpr quint32 kIds[] = {Id::SeekHead, Id::Info,        Id::Tracks,   Id::Cluster,
                                       Id::Cues,     Id::Attachments, Id::Chapters, Id::Tags,
                                       Id::Void,     Id::Crc32,       Id::Header,   Id::Segment};
    return std::ranges::find(kIds, id) != std::end(kIds);
}

bool isInCluster(quint32 id) {
    static constexpr quint32 kIds[] = {Id::SimpleBlock, Id::BlockGroup,   Id::Timestamp,
                                       Id::Void,        Id::Position,     Id::PrevSize,
                                       Id::Crc32,       Id::SilentTracks, Id::EncryptedBlock};
    return std::ranges::find(kIds, id) != std::end(kIds);
}

}  // namespace media::matroska
