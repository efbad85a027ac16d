#include "media/FrameDigest.h"

#include <QByteArrayView>

#include <algorithm>

namespace media {

void FrameDigest::add(Bytes bytes) {
    if (bytes.empty()) return;
    if (!m_hash) m_hash = std::make_unique<QCryptographicHash>(QCryptographicHash::Sha1);
    m_hash->addData(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

void FrameDigest::add(File& file, quint64 position, quint64 end) {
    std::array<unsigned char, 65536> bytes;
    while (position < end) {
        const std::size_t length =
            file.read(position, std::span(bytes).first(std::min<quint64>(bytes.size(), end - position)));
        if (length == 0) return;
        add(Bytes(bytes).first(length));
        position += length;
    }
}

QByteArray FrameDigest::result() const {
    return m_hash ? m_hash->result() : QByteArray();
}

}  // namespace media
