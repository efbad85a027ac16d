#include "media/Mp4Boxes.h"

namespace mp4 {

std::optional<Box> Boxes::next() {
    if (m_damaged || m_position >= m_end) return std::nullopt;
    const quint64 available = m_end - m_position;
    const media::Bytes header = m_bytes.at(m_position, available < 16 ? available : 16);
    if (header.size() < 8) {
        // Up to four zeros end a list of boxes in QuickTime files.
        m_damaged = available > 4 || m_bytes.number(m_position, available) != 0;
        m_position = m_end;
        return std::nullopt;
    }
    Box box;
    box.position = m_position;
    box.type = static_cast<quint32>(media::bigEndian(header.subspan(4, 4)));
    quint64 size = media::bigEndian(header.first(4));
    quint64 headerSize = 8;
    if (size == 1) {
        headerSize = 16;
        size = header.size() < 16 ? 0 : media::bigEndian(header.subspan(8, 8));
    } else if (size == 0 && box.type != 0) {
        size = available;
    }
    if (size < headerSize) {
        m_damaged = true;
        return std::nullopt;
    }
    box.data = m_position + headerSize;
    m_damaged = size > available;
    box.end = m_position + (size > available && size > (quint64{1} << 62U) ? quint64{1} << 62U : size);
    m_position = m_damaged ? m_end : box.end;
    return box;
}

}  // namespace mp4
