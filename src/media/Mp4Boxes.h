#pragma once

#include "media/FileReader.h"

#include <optional>

/// The boxes that MP4 and QuickTime files consist of: a size, a type and contents.
namespace mp4 {

/// A box's type or a codec's name, "moov".
constexpr quint32 fourCc(const char (&text)[5]) {
    quint32 value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8U | static_cast<unsigned char>(text[i]);
    return value;
}

struct Box {
    quint32 type = 0;
    quint64 position = 0;  ///< Of its header.
    quint64 data = 0;      ///< Of the contents.
    quint64 end = 0;       ///< May be behind the end of what contains it: see Boxes.

    quint64 size() const { return end - data; }
};

/// Goes through the boxes that follow each other from `position` up to `end`. Reads the headers only.
class Boxes {
public:
    Boxes(media::FileReader& bytes, quint64 position, quint64 end)
        : m_bytes(bytes), m_position(position), m_end(end) {}
    Boxes(media::FileReader& bytes, const Box& parent) : Boxes(bytes, parent.data, parent.end) {}

    /// Null at the end and where there is no box. A box that is longer than what contains it is the last one.
    std::optional<Box> next();

    /// Where next() goes on.
    quint64 position() const { return m_position; }
    /// What next() found last is no box, or is longer than what contains it.
    bool isDamaged() const { return m_damaged; }

private:
    media::FileReader& m_bytes;
    quint64 m_position;
    quint64 m_end;
    bool m_damaged = false;
};

}  // namespace mp4
