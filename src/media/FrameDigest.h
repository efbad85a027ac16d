#pragma once

#include "media/FileReader.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <memory>

namespace media {

/// The digest of a track's frames, added in their order.
class FrameDigest {
public:
    void add(Bytes bytes);
    /// The bytes of the file from `position` to `end`.
    void add(File& file, quint64 position, quint64 end);
    /// Empty if nothing was added.
    QByteArray result() const;

private:
    std::unique_ptr<QCryptographicHash> m_hash;  // Most readings need none.
};

}  // namespace media
