#include "media/AviPictures.h"

#include "media/FileReader.h"
#include "media/Mp4Boxes.h"

#include <algorithm>
#include <utility>

namespace media {

namespace {

using mp4::fourCc;

constexpr int kMostStreams = 100;  // Two digits.
constexpr quint64 kNotKey = 0x80000000;

struct Chunk {
    quint64 type = 0;
    quint64 data = 0;
    quint64 end = 0;
};

class AviScan {
public:
    AviScan(const QString& path, std::stop_token stop) : m_file(path, std::move(stop)), m_bytes(m_file) {}

    std::optional<std::vector<AviPictures>> run();

private:
    struct SuperIndex {
        quint64 position = 0;
        quint64 entries = 0;
    };
    struct Stream {
        AviPictures pictures;
        bool isVideo = false;
        SuperIndex index;
    };

    quint64 number(quint64 position, std::size_t length) {
        const Bytes bytes = m_bytes.at(position, length);
        quint64 value = 0;
        for (std::size_t i = bytes.size(); i > 0; --i)
            value = value << 8U | bytes[i - 1];
        return value;
    }
    std::optional<Chunk> chunkAt(quint64 position, quint64 end);
    template <typename Handle>
    void forEachChunk(quint64 position, quint64 end, const Handle& handle);
    void readStream(const Chunk& list);
    void readPlainIndex(const Chunk& chunk);
    void readIndexes(Stream& stream);
    void count(Stream& stream, quint64 size) {
        ++(size == 0 ? stream.pictures.dropped : stream.pictures.indexed);
    }

    File m_file;
    FileReader m_bytes;
    std::vector<Stream> m_streams;
};

std::optional<Chunk> AviScan::chunkAt(quint64 position, quint64 end) {
    const Bytes header = m_bytes.at(position, 8);
    if (position >= end || header.size() < 8) return std::nullopt;
    const quint64 type = bigEndian(header.first(4));
    return Chunk{type, position + 8, std::min(position + 8 + number(position + 4, 4), end)};
}

template <typename Handle>
void AviScan::forEachChunk(quint64 position, quint64 end, const Handle& handle) {
    while (const std::optional<Chunk> chunk = chunkAt(position, end)) {
        handle(*chunk);
        position = chunk->end + (chunk->end & 1U);
    }
}

std::optional<std::vector<AviPictures>> AviScan::run() {
    const bool isAvi = m_bytes.number(0, 4) == fourCc("RIFF") && m_bytes.number(8, 4) == fourCc("AVI ");
    forEachChunk(0, isAvi ? m_file.size() : 0, [this](const Chunk& riff) {
        if (riff.type != fourCc("RIFF")) return;
        forEachChunk(riff.data + 4, riff.end, [this](const Chunk& chunk) {
            if (chunk.type == fourCc("idx1")) readPlainIndex(chunk);
            if (chunk.type != fourCc("LIST") || m_bytes.number(chunk.data, 4) != fourCc("hdrl")) return;
            forEachChunk(chunk.data + 4, chunk.end, [this](const Chunk& list) {
                if (list.type == fourCc("LIST") && m_bytes.number(list.data, 4) == fourCc("strl"))
                    readStream(list);
            });
        });
    });
    std::vector<AviPictures> result;
    for (Stream& stream : m_streams) {
        if (!stream.isVideo) continue;
        if (stream.index.entries > 0) readIndexes(stream);
        result.push_back(stream.pictures);
    }
    if (!m_file.isOpen() || m_file.isCancelled() || m_file.hasFailed()) return std::nullopt;
    return result;
}

void AviScan::readStream(const Chunk& list) {
    if (m_streams.size() >= kMostStreams) return;
    Stream& stream = m_streams.emplace_back();
    stream.pictures.stream = static_cast<int>(m_streams.size()) - 1;
    forEachChunk(list.data + 4, list.end, [&](const Chunk& chunk) {
        if (chunk.type == fourCc("strh")) {
            stream.isVideo = m_bytes.number(chunk.data, 4) == fourCc("vids");
            stream.pictures.declared = number(chunk.data + 32, 4);
        }
        constexpr quint64 kIndexOfIndexes = 0;
        if (chunk.type != fourCc("indx") || number(chunk.data + 3, 1) != kIndexOfIndexes) return;
        const quint64 room = chunk.end - std::min(chunk.data + 24, chunk.end);
        stream.index = {chunk.data + 24, std::min(number(chunk.data + 4, 4), room / 16)};
    });
}

/// Of files with OpenDML's indexes this one has the first part only.
void AviScan::readPlainIndex(const Chunk& chunk) {
    for (quint64 at = chunk.data; at + 16 <= chunk.end; at += 16) {
        const Bytes entry = m_bytes.at(at, 16);
        if (entry.size() < 16) return;
        const auto tens = static_cast<std::size_t>(entry[0] - '0');  // Huge for what is no digit.
        const auto ones = static_cast<std::size_t>(entry[1] - '0');
        const bool isPicture = entry[2] == 'd' && (entry[3] == 'c' || entry[3] == 'b');
        if (!isPicture || tens > 9 || ones > 9) continue;
        const std::size_t index = tens * 10 + ones;
        if (index < m_streams.size() && m_streams[index].index.entries == 0)
            count(m_streams[index], number(at + 12, 4));
    }
}

void AviScan::readIndexes(Stream& stream) {
    quint64 before = 0;
    for (quint64 i = 0; i < stream.index.entries; ++i) {
        const quint64 position = number(stream.index.position + 16 * i, 8);
        const std::optional<Chunk> chunk = chunkAt(position, m_file.size());
        // They are in order; one index named many times would take for ever.
        if (!chunk || position < before) return;
        before = chunk->end;
        const quint64 room = chunk->end - std::min(chunk->data + 24, chunk->end);
        const quint64 entries = std::min(number(chunk->data + 4, 4), room / 8);
        for (quint64 entry = 0; entry < entries && !m_file.isCancelled(); ++entry)
            count(stream, number(chunk->data + 24 + 8 * entry + 4, 4) & ~kNotKey);
    }
}

}  // namespace

std::optional<std::vector<AviPictures>> aviPictures(const QString& path, std::stop_token stop) {
    return AviScan(path, std::move(stop)).run();
}

}  // namespace media
