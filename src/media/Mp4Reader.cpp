#include "media/Findings.h"
#include "media/Mp4Boxes.h"
#include "media/NalUnits.h"
#include "media/SampleTable.h"
#include "media/VisibleText.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <memory>
#include <thread>
#include <utility>

namespace media {

namespace {

using mp4::Box;
using mp4::Boxes;
using mp4::Chunk;
using mp4::fourCc;
using mp4::Sample;
using mp4::SampleTable;

constexpr std::size_t kMostEdits = 64;  // A file has one or two.
constexpr std::size_t kMostChapterTracks = 16;
constexpr quint64 kFarthest = quint64{1} << 62U;  // Behind any file; what is added does not overflow.
constexpr quint64 kMostShared = 4;                // So many tracks may have the same samples.
constexpr quint32 kLargeSample = FileReader::kMost / 2;
constexpr quint64 kFirstUnits = 128;             // The headers of a picture's first units are mostly within.
constexpr quint64 kStripe = quint64{16} << 20U;  // bytes of the file that one thread looks at
constexpr quint32 kNotKey = 0x10000;             // sample_is_non_sync_sample

/// A part of the track's media and where it is presented; in the units of the file.
struct Edit {
    double start = 0;
    double length = 0;
    double media = 0;
};

/// How the samples of a fragment are unless it says otherwise.
struct FragmentDefaults {
    quint32 description = 0;
    quint32 duration = 0;
    quint32 size = 0;
    quint32 flags = 0;
};

/// What is needed of a track while its samples are read; beside the Track of the same index.
struct TrackState {
    mp4::SampleTables tables;
    double timeScale = 0;  // Units in a second.
    std::vector<Edit> edits;
    NalFormat nal;
    FrameRules rules;
    quint64 rawPacketSamples = 0;  // QuickTime: so many samples take
    quint64 rawPacketBytes = 0;    // so many bytes.
    quint32 handler = 0;
    FragmentDefaults defaults;
    quint64 nextTime = 0;  // Of the next fragment.
    PresentationTimes times;
    bool isBeyondFile = false;  // It has more bytes than the file: its tables are not believed any longer.
    std::unique_ptr<SampleTable> table;
    Chunk chunk;
};

std::string typeText(quint32 type) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto byte = static_cast<char>(type >> static_cast<unsigned>(shift) & 0xFFU);
        text += byte >= ' ' && byte <= '~' ? byte : '?';
    }
    return text;
}

class Mp4Scan {
public:
    Mp4Scan(const QString& path, const Options& options, std::stop_token stop)
        : m_file(path, std::move(stop), options.mayReadUpTo),
          m_bytes(m_file),
          m_frames(m_file),
          m_checksFrames(options.checkFrames),
          m_shares(options.usesTwoThreads ? 2 : 1) {}

    /// Looks at the other frames, of the half that the scan leaves out otherwise. Keeps no lines.
    void takeOtherShare() {
        m_share = 1;
        m_findings.budget.lines = 0;
    }

    Reading run();

private:
    void readMovie(const Box& movie);
    void readMovieHeader(const Box& box);
    void readTrack(const Box& box);
    void readTrackHeader(const Box& box, Track& track);
    void readEdits(const Box& edits, TrackState& state);
    void readMedia(const Box& media, Track& track, TrackState& state);
    void readMediaHeader(const Box& box, Track& track, TrackState& state);
    void readTables(const Box& tables, Track& track, TrackState& state);
    void readDescription(const Box& box, Track& track, TrackState& state);
    void readVideoEntry(const Box& entry, Track& track, TrackState& state);
    void readAudioEntry(const Box& entry, Track& track, TrackState& state);
    void readSizes(const Box& box, bool isCompact, TrackState& state);
    mp4::TableLocation entries(const Box& box, quint64 entrySize);
    void readUserData(const Box& box);
    void finishTracks();

    void readSamples();
    void readChunk(std::size_t index);
    void readRawChunk(Track& track, TrackState& state);
    void finishTable(std::size_t index);
    bool addSample(Track& its, TrackState& state, const Sample& sample, bool isFirstDescription);
    void checkFrame(const TrackState& state, const Sample& sample, double from, double to);
    std::optional<std::pair<double, double>> presented(const TrackState& state, const Sample& sample) const;

    void readFragment(const Box& fragment);
    void readTrackFragment(const Box& box, quint64 fragment, quint64& dataEnd);
    void readRun(const Box& box, std::size_t index, const FragmentDefaults& defaults, quint64 base,
                 quint64& offset);

    void damaged(Fault fault, quint64 position, double from = 0, double to = 0) {
        m_findings.addDamage(fault, position, from, to);
    }
    quint64 number(quint64 position, std::size_t length, const Box& box) {
        return position + length <= box.end ? m_bytes.number(position, length) : 0;
    }
    /// The threads stay near to each other in the file, which suits disks.
    bool isOfThisShare(quint64 offset) const { return offset / kStripe % m_shares == m_share; }
    bool isInside(quint64 offset, quint64 bytes) const {
        return offset <= m_file.size() && bytes <= m_file.size() - offset;
    }
    Track& track(std::size_t index) { return m_findings.reading.tracks[index]; }

    File m_file;
    FileReader m_bytes;   // For boxes
    FileReader m_frames;  // and for samples, which are elsewhere.
    bool m_checksFrames;
    unsigned m_shares;  // In how many scans look at the frames, and
    unsigned m_share = 0;
    Findings m_findings;
    std::vector<TrackState> m_states;
    std::vector<quint64> m_chapterTracks;
    int m_listedChapters = 0;
    double m_movieScale = 0;  // Units in a second.
    quint64 m_allBytes = 0;   // Of all tracks' samples.
    double m_end = 0;         // Of the presentation of all tracks, as far as it was read; seconds.
    bool m_hasMovie = false;
};

Reading Mp4Scan::run() {
    Reading& reading = m_findings.reading;
    reading.container = Container::Mp4;
    Boxes boxes(m_bytes, 0, m_file.size());
    bool truncated = false;
    while (const std::optional<Box> box = boxes.next()) {
        truncated = box->end > m_file.size();
        if (box->type == fourCc("moov") && !m_hasMovie && !truncated) {
            m_hasMovie = true;
            readMovie(*box);
            readSamples();
        } else if (box->type == fourCc("moof") && m_hasMovie && !truncated) {
            readFragment(*box);
        }
    }
    if (truncated) damaged(Fault::TruncatedFile, m_file.size(), m_end, reading.duration.value_or(m_end));
    // What other programs append is no damage of the movie: its samples were found.
    if (boxes.isDamaged() && !truncated && !m_hasMovie) damaged(Fault::JunkBetweenElements, boxes.position());
    finishTracks();
    if (!m_hasMovie && reading.problem == Problem::None) reading.problem = Problem::NoTracks;
    return m_findings.finished(m_file);
}

void Mp4Scan::readMovie(const Box& movie) {
    m_findings.reading.hasIndex = true;
    Boxes boxes(m_bytes, movie);
    while (const std::optional<Box> box = boxes.next()) {
        if (boxes.isDamaged()) break;
        if (box->type == fourCc("mvhd")) readMovieHeader(*box);
        if (box->type == fourCc("trak")) readTrack(*box);
        if (box->type == fourCc("udta")) readUserData(*box);
        if (box->type == fourCc("cmov")) m_findings.reading.problem = Problem::CompressedIndex;
        if (box->type != fourCc("mvex")) continue;
        Boxes extensions(m_bytes, *box);
        while (const std::optional<Box> extension = extensions.next()) {
            if (extension->type != fourCc("trex") || extension->size() < 24) continue;
            const quint64 id = m_bytes.number(extension->data + 4, 4);
            for (std::size_t i = 0; i < m_states.size(); ++i) {
                if (track(i).number != id) continue;
                const auto word = [&](quint64 place) {
                    return static_cast<quint32>(m_bytes.number(extension->data + place, 4));
                };
                m_states[i].defaults = {word(8), word(12), word(16), word(20)};
            }
        }
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, boxes.position());
    for (TrackState& state : m_states) {
        for (Edit& edit : state.edits) {
            edit.start = m_movieScale > 0 ? edit.start / m_movieScale : 0;
            edit.length = m_movieScale > 0 ? edit.length / m_movieScale : 0;
            edit.media = state.timeScale > 0 ? edit.media / state.timeScale : 0;
        }
        // Of length 0: to the end, where the rest comes in fragments.
        if (!state.edits.empty() && state.edits.back().length <= 0)
            state.edits.back().length = std::numeric_limits<double>::infinity();
    }
}

void Mp4Scan::readMovieHeader(const Box& box) {
    const bool isLong = number(box.data, 1, box) == 1;
    m_movieScale = static_cast<double>(number(box.data + (isLong ? 20 : 12), 4, box));
    const quint64 duration = isLong ? number(box.data + 24, 8, box) : number(box.data + 16, 4, box);
    const bool isKnown = duration != 0 && duration != (isLong ? ~quint64{0} : 0xFFFFFFFFU);
    if (m_movieScale > 0 && isKnown)
        m_findings.reading.duration = static_cast<double>(duration) / m_movieScale;
}

void Mp4Scan::readTrack(const Box& box) {
    Track* added = m_findings.addTrack();
    if (!added) return;
    Track& track = *added;
    TrackState& state = m_states.emplace_back();
    track.index = static_cast<int>(m_states.size()) - 1;
    Boxes boxes(m_bytes, box);
    while (const std::optional<Box> child = boxes.next()) {
        if (boxes.isDamaged()) break;
        if (child->type == fourCc("tkhd")) readTrackHeader(*child, track);
        if (child->type == fourCc("mdia")) readMedia(*child, track, state);
        if (child->type != fourCc("edts") && child->type != fourCc("tref") && child->type != fourCc("udta"))
            continue;
        Boxes inner(m_bytes, *child);
        while (const std::optional<Box> part = inner.next()) {
            if (inner.isDamaged()) break;
            if (part->type == fourCc("elst")) readEdits(*part, state);
            if (part->type == fourCc("name") && child->type == fourCc("udta"))
                track.name = textAt(m_bytes, part->data, part->size());
            if (part->type != fourCc("chap")) continue;
            for (quint64 at = part->data; at + 4 <= part->end && m_chapterTracks.size() < kMostChapterTracks;
                 at += 4)
                m_chapterTracks.push_back(m_bytes.number(at, 4));
        }
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, boxes.position());
    // The tables have a duration for each frame.
    state.times = PresentationTimes(0, track.kind == TrackKind::Video || track.kind == TrackKind::Audio);
}

void Mp4Scan::readTrackHeader(const Box& box, Track& track) {
    const bool isLong = number(box.data, 1, box) == 1;
    const quint64 behindTimes = box.data + (isLong ? 36 : 24);
    if (behindTimes + 12 > box.end) return damaged(Fault::BadElement, box.position);
    track.number = m_bytes.number(box.data + (isLong ? 20 : 12), 4);
    track.enabledPosition = box.data + 3;
    track.isEnabled = (m_bytes.number(track.enabledPosition, 1) & 1U) != 0;
    track.alternateGroupPosition = behindTimes + 10;
    track.alternateGroup = static_cast<int>(m_bytes.number(track.alternateGroupPosition, 2));
}

void Mp4Scan::readEdits(const Box& box, TrackState& state) {
    const bool isLong = number(box.data, 1, box) == 1;
    const mp4::TableLocation table = entries(box, isLong ? 20 : 12);
    double start = 0;
    for (quint64 i = 0; i < std::min<quint64>(table.entries, kMostEdits); ++i) {
        const quint64 at = table.position + i * (isLong ? 20 : 12);
        const auto length = static_cast<double>(m_bytes.number(at, isLong ? 8 : 4));
        const quint64 raw = m_bytes.number(at + (isLong ? 8 : 4), isLong ? 8 : 4);
        const auto media = isLong ? static_cast<qint64>(raw) : qint64{static_cast<qint32>(raw)};
        if (media >= 0) state.edits.push_back({start, length, static_cast<double>(media)});
        start += length;
    }
}

void Mp4Scan::readMedia(const Box& media, Track& track, TrackState& state) {
    Boxes boxes(m_bytes, media);
    while (const std::optional<Box> box = boxes.next()) {
        if (boxes.isDamaged()) break;
        if (box->type == fourCc("mdhd")) readMediaHeader(*box, track, state);
        if (box->type == fourCc("hdlr")) {
            state.handler = static_cast<quint32>(number(box->data + 8, 4, *box));
            if (state.handler == fourCc("vide")) track.kind = TrackKind::Video;
            if (state.handler == fourCc("soun")) track.kind = TrackKind::Audio;
        }
        if (box->type != fourCc("minf")) continue;
        Boxes inner(m_bytes, *box);
        while (const std::optional<Box> part = inner.next()) {
            if (inner.isDamaged()) break;
            if (part->type == fourCc("stbl")) readTables(*part, track, state);
        }
        if (inner.isDamaged()) damaged(Fault::BadElement, inner.position());
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, boxes.position());
}

void Mp4Scan::readMediaHeader(const Box& box, Track& track, TrackState& state) {
    const bool isLong = number(box.data, 1, box) == 1;
    state.timeScale = static_cast<double>(number(box.data + (isLong ? 20 : 12), 4, box));
    const quint64 language = number(box.data + (isLong ? 32 : 20), 2, box);
    if (state.timeScale <= 0) damaged(Fault::BadTable, box.position);
    if (language < 0x400 || language >= 0x7FFF) return;
    for (const unsigned shift : {10U, 5U, 0U})
        track.language += static_cast<char>((language >> shift & 0x1FU) + 0x60);
}

mp4::TableLocation Mp4Scan::entries(const Box& box, quint64 entrySize) {
    const quint64 declared = number(box.data + 4, 4, box);
    const quint64 room = box.size() < 8 ? 0 : (box.size() - 8) / entrySize;
    if (declared > room) damaged(Fault::BadTable, box.position);
    return {box.data + 8, std::min(declared, room)};
}

void Mp4Scan::readTables(const Box& tables, Track& track, TrackState& state) {
    Boxes boxes(m_bytes, tables);
    while (const std::optional<Box> box = boxes.next()) {
        if (boxes.isDamaged()) break;
        mp4::SampleTables& found = state.tables;
        switch (box->type) {
            case fourCc("stsd"):
                readDescription(*box, track, state);
                break;
            case fourCc("stts"):
                found.times = entries(*box, 8);
                break;
            case fourCc("ctts"):
                found.compositions = entries(*box, 8);
                break;
            case fourCc("stsc"):
                found.chunkRuns = entries(*box, 12);
                break;
            case fourCc("stco"):
            case fourCc("co64"):
                found.hasWideChunks = box->type == fourCc("co64");
                found.chunks = entries(*box, found.hasWideChunks ? 8 : 4);
                break;
            case fourCc("stss"):
                found.hasKeys = true;
                found.keys = entries(*box, 4);
                break;
            case fourCc("stsz"):
            case fourCc("stz2"):
                readSizes(*box, box->type == fourCc("stz2"), state);
                break;
            default:
                break;
        }
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, boxes.position());
}

void Mp4Scan::readSizes(const Box& box, bool isCompact, TrackState& state) {
    mp4::SampleTables& found = state.tables;
    const auto size = static_cast<quint32>(number(box.data + 4, 4, box));
    found.samples = number(box.data + 8, 4, box);
    found.sizeBits = isCompact ? size & 0xFFU : 32;
    found.constantSize = isCompact ? 0 : size;
    if (found.constantSize != 0) return;
    const bool isKnown =
        found.sizeBits == 4 || found.sizeBits == 8 || found.sizeBits == 16 || found.sizeBits == 32;
    const quint64 room = box.size() < 12 ? 0 : box.size() - 12;
    const quint64 samples = isKnown ? std::min(found.samples, room * 8 / found.sizeBits) : 0;
    if (samples < found.samples) damaged(Fault::BadTable, box.position);
    found.samples = samples;
    if (!isKnown) found.sizeBits = 32;
    found.sizes = {box.data + 12, found.sizeBits == 4 ? (samples + 1) / 2 : samples};
}

void Mp4Scan::readDescription(const Box& box, Track& track, TrackState& state) {
    if (box.size() < 8) return;
    Boxes entries(m_bytes, box.data + 8, box.end);
    const std::optional<Box> entry = entries.next();
    if (!entry || entries.isDamaged()) return damaged(Fault::BadElement, box.position);
    track.codec = typeText(entry->type);
    state.rules = frameRules(track.codec);
    const bool isText = entry->type == fourCc("tx3g");
    const bool hasTextHandler = state.handler == fourCc("sbtl") || state.handler == fourCc("subt") ||
                                state.handler == fourCc("text") || state.handler == fourCc("subp") ||
                                state.handler == fourCc("clcp");
    if (isText || hasTextHandler) track.kind = TrackKind::Subtitle;
    track.isText = isText || (hasTextHandler && entry->type == fourCc("text"));
    if (track.kind == TrackKind::Video) readVideoEntry(*entry, track, state);
    if (track.kind == TrackKind::Audio) readAudioEntry(*entry, track, state);
}

void Mp4Scan::readVideoEntry(const Box& entry, Track& track, TrackState& state) {
    track.width = static_cast<int>(number(entry.data + 24, 2, entry));
    track.height = static_cast<int>(number(entry.data + 26, 2, entry));
    Boxes boxes(m_bytes, std::min(entry.data + 78, entry.end), entry.end);
    while (const std::optional<Box> box = boxes.next()) {
        if (boxes.isDamaged()) break;
        if (box->type != fourCc("avcC") && box->type != fourCc("hvcC")) continue;
        const std::size_t length = std::min<quint64>(box->size(), kNalConfiguration);
        state.nal = nalFormat(m_bytes.at(box->data, length), box->type == fourCc("hvcC"));
    }
}

void Mp4Scan::readAudioEntry(const Box& entry, Track& track, TrackState& state) {
    const quint64 version = number(entry.data + 8, 2, entry);
    track.channels = static_cast<int>(number(entry.data + 16, 2, entry));
    track.sampleRate = static_cast<double>(number(entry.data + 24, 4, entry)) / 65536;
    if (version == 1) {
        state.rawPacketSamples = number(entry.data + 28, 4, entry);
        state.rawPacketBytes = number(entry.data + 36, 4, entry);
    } else if (version == 2) {
        track.sampleRate = std::bit_cast<double>(number(entry.data + 32, 8, entry));
        track.channels = static_cast<int>(number(entry.data + 40, 4, entry) & 0xFFFFU);
    }
}

void Mp4Scan::readUserData(const Box& data) {
    Boxes boxes(m_bytes, data);
    while (const std::optional<Box> box = boxes.next()) {
        if (boxes.isDamaged()) break;
        if (box->type == fourCc("chpl")) {
            const quint64 version = number(box->data, 1, *box);
            m_listedChapters = static_cast<int>(number(box->data + (version != 0 ? 8 : 4), 1, *box));
        }
        if (box->type != fourCc("meta")) continue;
        Boxes meta(m_bytes, std::min(box->data + 4, box->end), box->end);
        while (const std::optional<Box> list = meta.next()) {
            if (meta.isDamaged()) break;
            if (list->type != fourCc("ilst")) continue;
            Boxes items(m_bytes, *list);
            while (const std::optional<Box> item = items.next())
                m_findings.reading.hasCover |= item->type == fourCc("covr") && item->size() > 16;
        }
    }
}

void Mp4Scan::finishTracks() {
    Reading& reading = m_findings.reading;
    reading.chapters = m_listedChapters;
    for (std::size_t i = 0; i < m_states.size(); ++i) {
        Track& done = track(i);
        m_states[i].times.finish(done, m_findings.budget);
        if (done.keyFrames == 0) done.leadingFrames = done.frames;
        if (done.kind != TrackKind::Video) done.leadingFrames = 0;
        if (std::ranges::find(m_chapterTracks, done.number) == m_chapterTracks.end()) continue;
        done.isChapters = true;
        done.kind = TrackKind::Other;
        reading.chapters =
            std::max(reading.chapters, static_cast<int>(std::min<quint64>(done.frames, 65536)));
    }
}

/// Goes through the chunks of all tracks together, in the order of the file.
void Mp4Scan::readSamples() {
    std::vector<std::size_t> heap;  // Indices of tracks, the one whose chunk comes first on top.
    const auto later = [this](std::size_t one, std::size_t other) {
        return m_states[one].chunk.offset > m_states[other].chunk.offset;
    };
    const auto queue = [&](std::size_t index) {
        TrackState& state = m_states[index];
        const std::optional<Chunk> chunk = state.isBeyondFile ? std::nullopt : state.table->nextChunk();
        if (!chunk) return finishTable(index);
        state.chunk = *chunk;
        heap.push_back(index);
        std::ranges::push_heap(heap, later);
    };
    for (std::size_t i = 0; i < m_states.size(); ++i) {
        m_states[i].table = std::make_unique<SampleTable>(m_file, m_states[i].tables);
        queue(i);
    }
    while (!heap.empty() && !m_file.isCancelled()) {
        std::ranges::pop_heap(heap, later);
        const std::size_t index = heap.back();
        heap.pop_back();
        readChunk(index);
        queue(index);
    }
}

void Mp4Scan::finishTable(std::size_t index) {
    TrackState& state = m_states[index];
    if (!state.isBeyondFile && !m_file.isCancelled() && !m_file.hasFailed() && !state.table->isConsistent())
        damaged(Fault::BadTable, state.tables.sizes.position, 0, m_findings.reading.duration.value_or(0));
    state.table.reset();
}

void Mp4Scan::readChunk(std::size_t index) {
    TrackState& state = m_states[index];
    Track& its = track(index);
    const bool isLookedAt = state.rules.isNeverZero || state.nal.lengthSize > 0 || its.isText;
    if (state.tables.constantSize != 0 && !isLookedAt) return readRawChunk(its, state);
    quint32 count = 0;
    while (const std::optional<Sample> sample = state.table->nextSample(state.chunk)) {
        if ((++count & 0xFFFU) == 0 && m_file.isCancelled()) return;
        state.nextTime = static_cast<quint64>(sample->decodeTime) + sample->duration;
        if (!addSample(its, state, *sample, state.chunk.description == 1)) return;
    }
}

/// Mostly a sample is a single value for each channel: there are millions of them, of one size and duration.
void Mp4Scan::readRawChunk(Track& its, TrackState& state) {
    Chunk chunk = state.chunk;
    const quint64 samples = chunk.samples;
    const std::optional<Sample> first = state.table->nextSample(chunk);
    if (!first) return;
    state.table->skipSamples(chunk);
    quint64 bytes = samples * first->size;
    if (state.rawPacketSamples > 0) bytes = samples / state.rawPacketSamples * state.rawPacketBytes;
    const double duration = first->duration / std::max(state.timeScale, 1.0);
    const double from = static_cast<double>(its.frames) * duration;
    const double to = from + static_cast<double>(samples) * duration;
    if (!isInside(first->offset, bytes)) damaged(Fault::SampleOutsideFile, first->offset, from, to);
    its.frames += samples;
    its.keyFrames += samples;
    its.bytes += bytes;
    state.times.add(from, to - from, its, m_findings.budget);
    m_end = std::max(m_end, to);
}

/// Seconds: from and to, as the edit list has it; null if it leaves the sample out.
std::optional<std::pair<double, double>> Mp4Scan::presented(const TrackState& state,
                                                            const Sample& sample) const {
    const double scale = state.timeScale > 0 ? state.timeScale : 1;
    const double from = (static_cast<double>(sample.decodeTime) + sample.composition) / scale;
    const double to = from + sample.duration / scale;
    if (state.edits.empty()) return std::pair(from, to);
    for (const Edit& edit : state.edits) {
        const double mediaEnd = edit.media + edit.length;
        if (from >= mediaEnd || (to <= edit.media && from < edit.media)) continue;
        return std::pair(edit.start + std::max(from - edit.media, 0.0),
                         edit.start + std::min(to, mediaEnd) - edit.media);
    }
    return std::nullopt;
}

/// False: no further sample of the track makes sense.
bool Mp4Scan::addSample(Track& its, TrackState& state, const Sample& sample, bool isFirstDescription) {
    const std::optional<std::pair<double, double>> time = presented(state, sample);
    if (!time) ++its.hiddenFrames;
    const double from = time ? time->first : m_end;
    const double to = time ? time->second : from;
    m_end = std::max(m_end, to);
    if (sample.isKey) {
        if (its.keyFrames++ == 0) its.leadingFrames = its.frames;
    }
    ++its.frames;
    its.bytes += sample.size;
    m_allBytes += sample.size;
    if (its.bytes > m_file.size() || m_allBytes / kMostShared > m_file.size()) {
        damaged(Fault::BadTable, state.tables.sizes.position, from, m_findings.reading.duration.value_or(to));
        state.isBeyondFile = true;
        return false;
    }
    const bool inside = isInside(sample.offset, sample.size);
    if (!inside) damaged(Fault::SampleOutsideFile, sample.offset, from, to);
    if (inside && isFirstDescription) checkFrame(state, sample, from, to);
    if (inside && its.isText && time && sample.size > 2) {
        const quint64 length = std::min<quint64>(m_frames.number(sample.offset, 2), sample.size - 2);
        const quint64 text = sample.offset + 2;
        if (length > 0)
            addLine(its, m_findings.budget,
                    {from, static_cast<float>(to - from), hasVisibleText(m_frames, text, text + length)});
    }
    if (time && !state.times.add(from, to - from, its, m_findings.budget))
        damaged(Fault::BadTable, sample.offset, from, to);
    return true;
}

void Mp4Scan::checkFrame(const TrackState& state, const Sample& sample, double from, double to) {
    if (sample.size == 0) {
        if (state.nal.lengthSize > 0 || state.rules.isNeverZero)
            damaged(Fault::EmptySample, sample.offset, from, to);
        return;
    }
    if (!m_checksFrames || !isOfThisShare(sample.offset) || m_file.isCancelled()) return;
    const quint64 end = sample.offset + sample.size;
    // Small samples are read together, with the beginning of what follows their chunk.
    const bool isLarge = sample.size > kLargeSample;
    m_frames.expect(isLarge ? kFirstUnits : (state.chunk.samples + 1ULL) * sample.size + kFirstUnits);
    if (const std::optional<Fault> fault = faultInFrame(m_frames, sample.offset, end, state.rules, state.nal))
        damaged(*fault, sample.offset, from, to);
}

void Mp4Scan::readFragment(const Box& fragment) {
    Boxes boxes(m_bytes, fragment);
    quint64 dataEnd = fragment.position;
    while (const std::optional<Box> box = boxes.next()) {
        if (boxes.isDamaged() || m_file.isCancelled()) break;
        if (box->type == fourCc("traf")) readTrackFragment(*box, fragment.position, dataEnd);
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, fragment.position, m_end, m_end);
}

/// `dataEnd`: where the samples of the fragment's previous track end.
void Mp4Scan::readTrackFragment(const Box& box, quint64 fragment, quint64& dataEnd) {
    std::size_t index = m_states.size();
    FragmentDefaults defaults;
    quint64 base = fragment;
    Boxes boxes(m_bytes, box);
    while (const std::optional<Box> part = boxes.next()) {
        if (boxes.isDamaged() || m_file.isCancelled()) break;
        if (part->type == fourCc("tfhd")) {
            const quint64 flags = number(part->data, 4, *part) & 0xFFFFFFU;
            const quint64 id = number(part->data + 4, 4, *part);
            for (index = 0; index < m_states.size() && track(index).number != id;)
                ++index;
            if (index == m_states.size()) {
                damaged(Fault::UnknownTrack, part->position, m_end, m_end);
                return;
            }
            defaults = m_states[index].defaults;
            quint64 at = part->data + 8;
            const auto field = [&](quint64 flag, std::size_t length, auto& value) {
                if ((flags & flag) == 0) return;
                value = static_cast<std::remove_reference_t<decltype(value)>>(number(at, length, *part));
                at += length;
            };
            const bool isBasedOnFragment = (flags & 0x20000U) != 0;
            base = isBasedOnFragment ? fragment : dataEnd;
            field(0x1, 8, base);
            field(0x2, 4, defaults.description);
            field(0x8, 4, defaults.duration);
            field(0x10, 4, defaults.size);
            field(0x20, 4, defaults.flags);
            dataEnd = base;
        }
        if (index == m_states.size()) continue;
        if (part->type == fourCc("tfdt"))
            m_states[index].nextTime =
                number(part->data + 4, number(part->data, 1, *part) == 1 ? 8 : 4, *part);
        if (part->type == fourCc("trun")) readRun(*part, index, defaults, base, dataEnd);
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, box.position, m_end, m_end);
}

/// `offset`: where the next run's samples are unless it says so.
void Mp4Scan::readRun(const Box& box, std::size_t index, const FragmentDefaults& defaults, quint64 base,
                      quint64& offset) {
    TrackState& state = m_states[index];
    Track& its = track(index);
    const quint64 flags = number(box.data, 4, box) & 0xFFFFFFU;
    quint64 samples = number(box.data + 4, 4, box);
    quint64 at = box.data + 8;
    if ((flags & 0x1U) != 0) {
        offset = base + static_cast<quint64>(qint64{static_cast<qint32>(number(at, 4, box))});
        at += 4;
    }
    offset = std::min(offset, kFarthest);
    std::optional<quint32> firstFlags;
    if ((flags & 0x4U) != 0) {
        firstFlags = static_cast<quint32>(number(at, 4, box));
        at += 4;
    }
    const auto fields = static_cast<quint64>(std::popcount(flags & 0xF00U));
    const quint64 room = at > box.end ? 0 : box.end - at;
    if (fields > 0 && samples > room / (4 * fields)) {
        damaged(Fault::BadTable, box.position, m_end, m_end);
        samples = room / (4 * fields);
    }
    // Nothing in the file bounds their number otherwise.
    if (fields == 0 && defaults.size == 0 && samples > 0)
        return damaged(Fault::BadTable, box.position, m_end, m_end);
    for (quint64 i = 0; i < samples && !state.isBeyondFile && !m_file.isCancelled(); ++i) {
        const auto field = [&](quint64 flag, quint32 otherwise) {
            if ((flags & flag) == 0) return otherwise;
            at += 4;
            return static_cast<quint32>(m_bytes.number(at - 4, 4));
        };
        Sample sample;
        sample.offset = offset;
        sample.decodeTime = static_cast<qint64>(state.nextTime);
        sample.duration = field(0x100, defaults.duration);
        sample.size = field(0x200, defaults.size);
        const quint32 sampleFlags = field(0x400, i == 0 && firstFlags ? *firstFlags : defaults.flags);
        sample.isKey = (sampleFlags & kNotKey) == 0;
        sample.composition = static_cast<qint32>(field(0x800, 0));
        state.nextTime += sample.duration;
        offset += sample.size;
        addSample(its, state, sample, defaults.description <= 1);
    }
}

}  // namespace

Reading readMp4(const QString& path, const Options& options, std::stop_token stop) {
    const auto scan = std::make_unique<Mp4Scan>(path, options, stop);
    if (!options.usesTwoThreads) return scan->run();
    const auto helper = std::make_unique<Mp4Scan>(path, options, std::move(stop));
    helper->takeOtherShare();
    Reading other;
    std::jthread thread([&] { other = helper->run(); });
    Reading reading = scan->run();
    thread.join();
    return withFramesOf(std::move(reading), other);
}

}  // namespace media
