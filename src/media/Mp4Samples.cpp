#include "media/Mp4Scan.h"
#include "media/VisibleText.h"

#include <algorithm>

namespace media {

using mp4::Chunk;
using mp4::Sample;
using mp4::SampleTable;

namespace {

constexpr quint64 kMostShared = 4;  // So many tracks may have the same samples.
constexpr quint32 kLargeSample = FileReader::kMost / 2;
constexpr quint64 kFirstUnits = 128;  // The headers of a picture's first units are mostly within.

}  // namespace

/// Goes through the chunks of all tracks together, in the order of the file.
void Mp4Scan::readSamples() {
    std::vector<std::size_t> heap;  // Indices of tracks, the one whose chunk comes first on top.
    const auto later = [this](std::size_t one, std::size_t other) {
        return m_states[one].chunk.offset > m_states[other].chunk.offset;
    };
    const auto queue = [&](std::size_t index) {
        Mp4Track& state = m_states[index];
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
    Mp4Track& state = m_states[index];
    if (!state.isBeyondFile && !m_file.isCancelled() && !m_file.hasFailed() && !state.table->isConsistent())
        damaged(Fault::BadTable, state.tables.sizes.position, 0, m_findings.reading.duration.value_or(0));
    state.table.reset();
}

void Mp4Scan::readChunk(std::size_t index) {
    Mp4Track& state = m_states[index];
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
void Mp4Scan::readRawChunk(Track& its, Mp4Track& state) {
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
std::optional<std::pair<double, double>> Mp4Scan::presented(const Mp4Track& state,
                                                            const Sample& sample) const {
    const double scale = state.timeScale > 0 ? state.timeScale : 1;
    const double from = (static_cast<double>(sample.decodeTime) + sample.composition) / scale;
    const double to = from + sample.duration / scale;
    if (state.edits.empty()) return std::pair(from, to);
    for (const Mp4Edit& edit : state.edits) {
        const double mediaEnd = edit.media + edit.length;
        if (from >= mediaEnd || (to <= edit.media && from < edit.media)) continue;
        return std::pair(edit.start + std::max(from - edit.media, 0.0),
                         edit.start + std::min(to, mediaEnd) - edit.media);
    }
    return std::nullopt;
}

/// False: no further sample of the track makes sense.
bool Mp4Scan::addSample(Track& its, Mp4Track& state, const Sample& sample, bool isFirstDescription) {
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
    if (inside && m_digestsFrames) state.digest.add(m_file, sample.offset, sample.offset + sample.size);
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

void Mp4Scan::checkFrame(const Mp4Track& state, const Sample& sample, double from, double to) {
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

}  // namespace media
