#include "media/Mp4Scan.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace media {

using mp4::Box;
using mp4::Boxes;
using mp4::fourCc;

namespace {

std::string typeText(quint32 type) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto byte = static_cast<char>(type >> static_cast<unsigned>(shift) & 0xFFU);
        text += byte >= ' ' && byte <= '~' ? byte : '?';
    }
    return text;
}

constexpr std::size_t kMostEdits = 64;  // A file has one or two.
constexpr std::size_t kMostChapterTracks = 16;

}  // namespace

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
    for (Mp4Track& state : m_states) {
        for (Mp4Edit& edit : state.edits) {
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
    Mp4Track& state = m_states.emplace_back();
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

void Mp4Scan::readEdits(const Box& box, Mp4Track& state) {
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

void Mp4Scan::readMedia(const Box& media, Track& track, Mp4Track& state) {
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

void Mp4Scan::readMediaHeader(const Box& box, Track& track, Mp4Track& state) {
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

void Mp4Scan::readTables(const Box& tables, Track& track, Mp4Track& state) {
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

void Mp4Scan::readSizes(const Box& box, bool isCompact, Mp4Track& state) {
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

void Mp4Scan::readDescription(const Box& box, Track& track, Mp4Track& state) {
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

void Mp4Scan::readVideoEntry(const Box& entry, Track& track, Mp4Track& state) {
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

void Mp4Scan::readAudioEntry(const Box& entry, Track& track, Mp4Track& state) {
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

}  // namespace media
