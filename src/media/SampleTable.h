#pragma once

#include "media/FileReader.h"

#include <array>
#include <optional>

namespace mp4 {

/// The entries of one table in the file.
struct TableLocation {
    quint64 position = 0;  ///< Of the first entry.
    quint64 entries = 0;
};

/// Where a track's sample tables are.
struct SampleTables {
    TableLocation times;         ///< stts
    TableLocation compositions;  ///< ctts
    TableLocation chunkRuns;     ///< stsc
    TableLocation chunks;        ///< stco, co64
    TableLocation sizes;         ///< stsz, stz2
    TableLocation keys;          ///< stss
    quint64 samples = 0;         ///< As stsz declares it.
    quint32 constantSize = 0;    ///< In bytes; 0: in the table.
    unsigned sizeBits = 32;      ///< Of an entry of `sizes`.
    bool hasWideChunks = false;  ///< co64
    bool hasKeys = false;        ///< Else all samples are key frames.
};

/// The entries of one table, one after the other, a piece of it in memory.
class TableCursor {
public:
    TableCursor(media::File& file, TableLocation table, std::size_t entrySize)
        : m_file(&file), m_position(table.position), m_left(table.entries), m_entrySize(entrySize) {}

    /// Empty at the end of the table or of the file.
    media::Bytes next();

private:
    media::File* m_file;
    quint64 m_position;
    quint64 m_left;
    std::size_t m_entrySize;
    std::size_t m_offset = 0;
    std::size_t m_length = 0;
    std::array<unsigned char, 256> m_bytes = {};
};

struct Chunk {
    quint64 offset = 0;
    quint32 samples = 0;
    quint32 description = 0;  ///< Of the sample entries, from 1.
};

struct Sample {
    quint64 offset = 0;
    quint32 size = 0;
    qint64 decodeTime = 0;  ///< In the track's time scale.
    quint32 duration = 0;
    qint32 composition = 0;  ///< Presentation time minus decodeTime.
    bool isKey = false;
};

/// A track's samples in their order, put together from the tables while these are read from the file.
class SampleTable {
public:
    SampleTable(media::File& file, const SampleTables& tables);

    /// Null at the end of the chunks, or of the samples.
    std::optional<Chunk> nextChunk();
    /// The next sample of `chunk`, which is the last that nextChunk() returned. Null when it has no more.
    std::optional<Sample> nextSample(Chunk& chunk);
    /// Counts the samples of `chunk` that nobody wants to see one by one, for tables of a constant size only.
    quint64 skipSamples(const Chunk& chunk);

    /// At the end: the tables describe as many samples as was declared, each with a size and a time.
    bool isConsistent() const { return m_consistent && m_samples == m_tables.samples; }

private:
    quint32 nextSize();
    void readTime();
    void readComposition();
    void readRun();
    void readKey();

    SampleTables m_tables;
    TableCursor m_times;
    TableCursor m_compositions;
    TableCursor m_chunkRuns;
    TableCursor m_chunks;
    TableCursor m_sizes;
    TableCursor m_keys;

    quint64 m_samples = 0;
    bool m_consistent = true;

    quint64 m_chunk = 0;
    Chunk m_run;
    Chunk m_runAfter;
    quint64 m_nextRun = 0;  // The chunk with which it begins, from 1; 0: there is none.

    quint64 m_time = 0;
    quint64 m_timesLeft = 0;
    quint32 m_duration = 0;
    quint64 m_compositionsLeft = 0;
    qint32 m_composition = 0;
    bool m_compositionsEnded = false;
    quint64 m_nextKey = 0;  // From 1; 0: there is none.
    unsigned m_pair = 0;    // Two sizes of four bits.
    bool m_lowNibble = false;
};

}  // namespace mp4
