#include "media/SampleTable.h"

#include <algorithm>
#include <limits>

namespace mp4 {

using media::bigEndian;
using media::Bytes;

namespace {

constexpr quint64 kFarthest = quint64{1} << 62U;  // Behind any file; what is added does not overflow.

quint32 wordAt(Bytes entry, std::size_t index) {
    return static_cast<quint32>(bigEndian(entry.subspan(index * 4, 4)));
}

}  // namespace

Bytes TableCursor::next() {
    if (m_left == 0) return {};
    if (m_length - m_offset < m_entrySize) {
        const quint64 most = std::min<quint64>(m_bytes.size() / m_entrySize, m_left);
        m_length = m_file->read(m_position, std::span(m_bytes).first(most * m_entrySize));
        m_position += m_length;
        m_offset = 0;
        if (m_length < m_entrySize) {
            m_left = 0;
            return {};
        }
    }
    --m_left;
    m_offset += m_entrySize;
    return Bytes(m_bytes).subspan(m_offset - m_entrySize, m_entrySize);
}

SampleTable::SampleTable(media::File& file, const SampleTables& tables)
    : m_tables(tables),
      m_times(file, tables.times, 8),
      m_compositions(file, tables.compositions, 8),
      m_chunkRuns(file, tables.chunkRuns, 12),
      m_chunks(file, tables.chunks, tables.hasWideChunks ? 8 : 4),
      m_sizes(file, tables.sizes, std::max(8U, tables.sizeBits) / 8),
      m_keys(file, tables.keys, 4) {
    m_compositionsEnded = tables.compositions.entries == 0;
    readRun();
    readKey();
}

void SampleTable::readRun() {
    const Bytes entry = m_chunkRuns.next();
    const quint64 before = m_nextRun;
    m_nextRun = entry.empty() ? 0 : std::max(1U, wordAt(entry, 0));
    if (m_nextRun == 0) return;
    if (m_nextRun <= before) m_consistent = false;
    m_runAfter = {0, wordAt(entry, 1), wordAt(entry, 2)};
}

void SampleTable::readKey() {
    const Bytes entry = m_keys.next();
    m_nextKey = entry.empty() ? 0 : wordAt(entry, 0);
}

std::optional<Chunk> SampleTable::nextChunk() {
    if (m_samples >= m_tables.samples) return std::nullopt;
    const Bytes offset = m_chunks.next();
    if (offset.empty()) return std::nullopt;
    ++m_chunk;
    while (m_nextRun != 0 && m_chunk >= m_nextRun) {
        m_run = m_runAfter;
        readRun();
    }
    Chunk chunk = m_run;
    chunk.offset = std::min(bigEndian(offset), kFarthest);
    chunk.samples = static_cast<quint32>(std::min<quint64>(chunk.samples, m_tables.samples - m_samples));
    return chunk;
}

quint32 SampleTable::nextSize() {
    if (m_tables.constantSize != 0) return m_tables.constantSize;
    if (m_tables.sizeBits == 4 && m_lowNibble) {
        m_lowNibble = false;
        return m_pair & 0x0FU;
    }
    const Bytes entry = m_sizes.next();
    if (entry.empty()) m_consistent = false;
    if (m_tables.sizeBits != 4 || entry.empty()) return static_cast<quint32>(bigEndian(entry));
    m_pair = entry[0];
    m_lowNibble = true;
    return m_pair >> 4U;
}

void SampleTable::readTime() {
    while (m_timesLeft == 0) {
        const Bytes entry = m_times.next();
        if (entry.empty()) {
            m_consistent = false;
            m_timesLeft = std::numeric_limits<quint64>::max();
            return;
        }
        m_timesLeft = wordAt(entry, 0);
        m_duration = wordAt(entry, 1);
        // Some writers had a negative difference there, to correct the one before.
        if (m_duration > static_cast<quint32>(std::numeric_limits<qint32>::max())) m_duration = 1;
    }
}

void SampleTable::readComposition() {
    while (m_compositionsLeft == 0 && !m_compositionsEnded) {
        const Bytes entry = m_compositions.next();
        m_compositionsEnded = entry.empty();
        m_compositionsLeft = entry.empty() ? 0 : wordAt(entry, 0);
        m_composition = entry.empty() ? 0 : static_cast<qint32>(wordAt(entry, 1));
    }
}

std::optional<Sample> SampleTable::nextSample(Chunk& chunk) {
    if (chunk.samples == 0) return std::nullopt;
    --chunk.samples;
    ++m_samples;
    readTime();
    readComposition();
    Sample sample;
    sample.offset = chunk.offset;
    sample.size = nextSize();
    sample.decodeTime = static_cast<qint64>(m_time);
    sample.duration = m_duration;
    sample.composition = m_composition;
    while (m_nextKey != 0 && m_nextKey < m_samples)
        readKey();
    sample.isKey = !m_tables.hasKeys || m_nextKey == m_samples;
    chunk.offset += sample.size;
    m_time += m_duration;
    --m_timesLeft;
    if (m_compositionsLeft > 0) --m_compositionsLeft;
    return sample;
}

quint64 SampleTable::skipSamples(const Chunk& chunk) {
    m_samples += chunk.samples;
    return chunk.samples;
}

}  // namespace mp4
