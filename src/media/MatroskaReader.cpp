#include "media/Ebml.h"
#include "media/Findings.h"
#include "media/NalUnits.h"
#include "media/VisibleText.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace media {

namespace {

using ebml::Element;
using ebml::elementAt;
using ebml::floatValue;
using ebml::unsignedValue;

enum Id : quint32 {
    Header = 0x1A45DFA3,
    Segment = 0x18538067,
    Void = 0xEC,
    Crc32 = 0xBF,

    SeekHead = 0x114D9B74,
    Info = 0x1549A966,
    Tracks = 0x1654AE6B,
    Cluster = 0x1F43B675,
    Cues = 0x1C53BB6B,
    Attachments = 0x1941A469,
    Chapters = 0x1043A770,
    Tags = 0x1254C367,

    TimestampScale = 0x2AD7B1,
    Duration = 0x4489,

    TrackEntry = 0xAE,
    TrackNumber = 0xD7,
    TrackType = 0x83,
    FlagEnabled = 0xB9,
    FlagDefault = 0x88,
    FlagForced = 0x55AA,
    DefaultDuration = 0x23E383,
    Name = 0x536E,
    Language = 0x22B59C,
    LanguageBcp47 = 0x22B59D,
    CodecId = 0x86,
    CodecPrivate = 0x63A2,
    CodecDelay = 0x56AA,
    Video = 0xE0,
    PixelWidth = 0xB0,
    PixelHeight = 0xBA,
    Audio = 0xE1,
    SamplingFrequency = 0xB5,
    Channels = 0x9F,
    ContentEncodings = 0x6D80,
    ContentEncoding = 0x6240,
    ContentEncodingScope = 0x5032,
    ContentEncodingType = 0x5033,
    ContentCompression = 0x5034,
    ContentCompAlgo = 0x4254,
    ContentCompSettings = 0x4255,

    Timestamp = 0xE7,
    SilentTracks = 0x5854,
    Position = 0xA7,
    PrevSize = 0xAB,
    SimpleBlock = 0xA3,
    BlockGroup = 0xA0,
    EncryptedBlock = 0xAF,
    Block = 0xA1,
    BlockDuration = 0x9B,
    ReferenceBlock = 0xFB,

    EditionEntry = 0x45B9,
    ChapterAtom = 0xB6,
    ChapterUid = 0x73C4,
    ChapterTimeStart = 0x91,

    AttachedFile = 0x61A7,
    FileMimeType = 0x4660,
};

constexpr double kBackwards = 10;           // seconds that a cluster may begin before an earlier one
constexpr double kBeyondDuration = 3600;    // seconds that a movie may go on behind its declared end
constexpr std::size_t kLongestPrefix = 16;  // Header stripping removes a few bytes.
constexpr unsigned kKeyFlag = 0x80;
constexpr unsigned kReservedFlags = 0x70;
constexpr quint64 kLongestBlockHeader = 12;
constexpr int kZerosOfRegion = 8;

bool isTopLevel(quint32 id) {
    static constexpr quint32 kIds[] = {Id::SeekHead, Id::Info,        Id::Tracks,   Id::Cluster,
                                       Id::Cues,     Id::Attachments, Id::Chapters, Id::Tags,
                                       Id::Void,     Id::Crc32,       Id::Header,   Id::Segment};
    return std::ranges::find(kIds, id) != std::end(kIds);
}

bool isInCluster(quint32 id) {
    static constexpr quint32 kIds[] = {Id::SimpleBlock, Id::BlockGroup,   Id::Timestamp,
                                       Id::Void,        Id::Position,     Id::PrevSize,
                                       Id::Crc32,       Id::SilentTracks, Id::EncryptedBlock};
    return std::ranges::find(kIds, id) != std::end(kIds);
}

bool isTextCodec(const std::string& codec) {
    static constexpr const char* kCodecs[] = {"S_TEXT/UTF8", "S_TEXT/ASCII", "S_TEXT/SSA",   "S_TEXT/ASS",
                                              "S_SSA",       "S_ASS",        "S_TEXT/WEBVTT"};
    return std::ranges::find(kCodecs, codec) != std::end(kCodecs);
}

/// What is needed of a track while blocks are read; beside the Track of the same index.
struct TrackState {
    double defaultDuration = 0;  // Seconds
    double delay = 0;
    NalFormat nal;
    FrameRules rules;
    bool looksInside = true;
    unsigned fieldsBeforeText = 0;  // ASS: so many commas come first.
    std::array<unsigned char, kLongestPrefix> prefix = {};
    std::size_t prefixLength = 0;
    PresentationTimes times;
};

/// One block while it is read.
struct BlockOfFrames {
    std::size_t track = 0;
    quint64 position = 0;
    quint64 data = 0;  // Of the lacing or the frame.
    quint64 end = 0;
    std::optional<double> time;  // Seconds; empty: the cluster has none.
    double duration = 0;         // Of all frames; 0: not given.
    unsigned lacing = 0;
    bool isKey = false;
};

class MatroskaScan {
public:
    MatroskaScan(const QString& path, const Options& options, std::stop_token stop)
        : m_file(path, std::move(stop), options.mayReadUpTo),
          m_bytes(m_file),
          m_checksFrames(options.checkFrames) {
        m_indices.fill(kNoTrack);
    }

    Reading run();

private:
    static constexpr qint16 kNoTrack = -1;

    template <typename Handle>
    void forEachChild(const Element& parent, const Handle& handle);
    quint64 readTopLevel(const Element& element);
    void readInfo(const Element& info);
    void readTrack(const Element& entry);
    void readCodec(const Element& entry, Track& track, TrackState& state);
    void readEncodings(const Element& encodings, Track& track, TrackState& state);
    void readChapters(const Element& chapters);
    void readAttachments(const Element& attachments);

    quint64 readCluster(const Element& cluster);
    void readTimestamp(const Element& element);
    void readBlockGroup(const Element& group);
    void readBlock(const Element& element, bool isSimple, bool isKey, double duration);
    bool readLaces(const BlockOfFrames& block);
    void readFrame(const BlockOfFrames& block, quint64 position, quint64 end, double delay, double duration);
    bool isVisibleEvent(const TrackState& state, quint64 position, quint64 end);

    quint64 resynced(quint64 position, quint64 clusterEnd);
    bool isPlausibleTopLevel(const Element& element);
    bool isPlausibleBlock(const Element& element, quint64 clusterEnd);

    int indexOf(quint64 number) const;
    void damaged(Fault fault, quint64 position);
    void sawTime(double time);
    Track& track(std::size_t index) { return m_findings.reading.tracks[index]; }

    File m_file;
    FileReader m_bytes;
    bool m_checksFrames;
    Findings m_findings;
    std::vector<TrackState> m_states;
    std::array<qint16, 128> m_indices = {};  // By track number.

    quint64 m_segmentEnd = 0;  // As far as there is a file.
    quint64 m_declaredEnd = 0;
    bool m_hasTracks = false;
    double m_scale = 1e-3;  // Seconds in a tick.
    double m_durationInTicks = 0;
    std::optional<double> m_clusterTime;  // Ticks
    double m_latestCluster = 0;           // Seconds
    double m_latest = 0;                  // The greatest time of a block; seconds.
    quint64 m_lastChapter = 0;
    int m_streams = 0;  // That the tool makes of the tracks.
};

/// Children that do not fit their parent end the loop: what is described there is not known.
template <typename Handle>
void MatroskaScan::forEachChild(const Element& parent, const Handle& handle) {
    const quint64 end = std::min(parent.unknownSize ? m_segmentEnd : parent.end(), m_file.size());
    for (quint64 position = parent.data; position < end && !m_file.isCancelled();) {
        const Element child = elementAt(m_bytes, position);
        if (!child.isValid() || child.unknownSize || child.end() > end) {
            if (!parent.unknownSize && parent.end() <= m_file.size()) damaged(Fault::BadElement, position);
            return;
        }
        handle(child);
        position = child.end();
    }
}

Reading MatroskaScan::run() {
    Reading& reading = m_findings.reading;
    reading.container = Container::Matroska;
    const quint64 size = m_file.size();
    m_segmentEnd = size;
    quint64 position = 0;
    while (position < size && !m_file.isCancelled() && !m_file.hasFailed()) {
        const Element element = elementAt(m_bytes, position);
        if (element.isValid() && isTopLevel(element.id) &&
            (element.unknownSize ? element.id == Id::Segment || element.id == Id::Cluster : true)) {
            const bool fits = element.unknownSize || element.end() <= size;
            if (fits || element.id == Id::Segment || element.id == Id::Cluster) {
                position = readTopLevel(element);
                continue;
            }
        }
        // What other programs append to a whole movie is none of its elements.
        if (m_declaredEnd != 0 && position >= m_declaredEnd) break;
        const bool isForeign =
            element.isValid() && !element.unknownSize && element.end() <= m_segmentEnd &&
            (element.end() == m_segmentEnd || isTopLevel(elementAt(m_bytes, element.end()).id));
        if (isForeign) {
            position = element.end();
            continue;
        }
        const quint64 next = resynced(position + 1, 0);
        const bool isCutOff = next >= size && element.isValid() && isTopLevel(element.id);
        if (!isCutOff)
            damaged(isZero(m_bytes, position, std::min(position + kZerosOfRegion, size))
                        ? Fault::Zeros
                        : Fault::JunkBetweenElements,
                    position);
        else
            m_declaredEnd = std::max(m_declaredEnd, element.end());
        position = next;
    }
    if (m_declaredEnd > size) damaged(Fault::TruncatedFile, size);
    for (std::size_t i = 0; i < m_states.size(); ++i) {
        Track& done = track(i);
        m_states[i].times.finish(done, m_findings.budget);
        if (done.keyFrames == 0) done.leadingFrames = done.frames;
        if (done.kind != TrackKind::Video) done.leadingFrames = 0;
    }
    if (m_durationInTicks > 0) reading.duration = m_durationInTicks * m_scale;
    m_findings.closeDamage(reading.duration.value_or(0));
    if (!m_hasTracks) reading.problem = Problem::NoTracks;
    return m_findings.finished(m_file);
}

/// Returns where to go on.
quint64 MatroskaScan::readTopLevel(const Element& element) {
    switch (element.id) {
        case Id::Segment:
            m_segmentEnd = element.unknownSize ? m_file.size() : std::min(element.end(), m_file.size());
            m_declaredEnd = element.unknownSize ? 0 : element.end();
            m_latestCluster = 0;
            return element.data;
        case Id::Cluster:
            return readCluster(element);
        case Id::Info:
            readInfo(element);
            break;
        case Id::Tracks:
            if (m_hasTracks) break;  // A copy, or another segment.
            forEachChild(element, [this](const Element& child) {
                if (child.id == Id::TrackEntry) readTrack(child);
            });
            break;
        case Id::Cues:
            m_findings.reading.hasIndex = true;
            break;
        case Id::Chapters:
            readChapters(element);
            break;
        case Id::Attachments:
            readAttachments(element);
            break;
        default:
            break;
    }
    return element.end();
}

void MatroskaScan::readInfo(const Element& info) {
    forEachChild(info, [this](const Element& child) {
        if (child.id == Id::TimestampScale) {
            const quint64 nanoseconds = unsignedValue(m_bytes, child);
            if (nanoseconds > 0) m_scale = static_cast<double>(nanoseconds) * 1e-9;
        }
        if (child.id == Id::Duration) {
            const double ticks = floatValue(m_bytes, child);
            if (ticks > 0 && ticks < 1e15) m_durationInTicks = ticks;
        }
    });
}

void MatroskaScan::readTrack(const Element& entry) {
    m_hasTracks = true;
    Track* added = m_findings.addTrack();
    if (!added) return;
    Track& its = *added;
    TrackState& state = m_states.emplace_back();
    its.language = "eng";
    its.isDefault = true;
    quint64 type = 0;
    bool hasBcp47 = false;
    forEachChild(entry, [&](const Element& child) {
        const auto value = [&] { return unsignedValue(m_bytes, child); };
        const auto text = [&] { return textAt(m_bytes, child.data, child.size); };
        switch (child.id) {
            case Id::TrackNumber:
                its.number = value();
                break;
            case Id::TrackType:
                type = value();
                break;
            case Id::FlagEnabled:
                its.isEnabled = child.size == 0 || value() != 0;
                break;
            case Id::FlagDefault:
                its.isDefault = child.size == 0 || value() != 0;
                break;
            case Id::FlagForced:
                its.isForced = value() != 0;
                break;
            case Id::DefaultDuration:
                state.defaultDuration = static_cast<double>(value()) * 1e-9;
                break;
            case Id::CodecDelay:
                state.delay = static_cast<double>(value()) * 1e-9;
                break;
            case Id::Name:
                its.name = text();
                break;
            case Id::Language:
                if (!hasBcp47) its.language = text();
                break;
            case Id::LanguageBcp47:
                its.language = text();
                hasBcp47 = true;
                break;
            case Id::CodecId:
                its.codec = text();
                break;
            case Id::ContentEncodings:
                readEncodings(child, its, state);
                break;
            case Id::Video:
            case Id::Audio:
                forEachChild(child, [&](const Element& part) {
                    const auto small = [&] {
                        return static_cast<int>(std::min<quint64>(unsignedValue(m_bytes, part), 65535));
                    };
                    if (part.id == Id::PixelWidth) its.width = small();
                    if (part.id == Id::PixelHeight) its.height = small();
                    if (part.id == Id::Channels) its.channels = small();
                    if (part.id == Id::SamplingFrequency) its.sampleRate = floatValue(m_bytes, part);
                });
                break;
            default:
                break;
        }
    });
    its.kind = type == 1      ? TrackKind::Video
               : type == 2    ? TrackKind::Audio
               : type == 0x11 ? TrackKind::Subtitle
                              : TrackKind::Other;
    constexpr quint64 kMetadata = 0x21;
    const bool hasStream = (its.kind != TrackKind::Other || type == kMetadata) && !its.codec.empty();
    its.index = hasStream ? m_streams++ : -1;
    if (its.kind == TrackKind::Audio && its.channels == 0) its.channels = 1;
    if (its.kind == TrackKind::Audio && its.sampleRate <= 0) its.sampleRate = 8000;
    readCodec(entry, its, state);
    state.times = PresentationTimes(state.defaultDuration, its.kind == TrackKind::Video);
    if (its.number < m_indices.size() && m_indices[its.number] == kNoTrack)
        m_indices[its.number] = static_cast<qint16>(m_states.size() - 1);
}

void MatroskaScan::readCodec(const Element& entry, Track& its, TrackState& state) {
    its.isText = its.kind == TrackKind::Subtitle && isTextCodec(its.codec);
    const bool isAss = its.codec.ends_with("ASS") || its.codec.ends_with("SSA");
    state.fieldsBeforeText = isAss ? 8 : 0;
    state.looksInside = m_checksFrames && !its.isEncoded && its.kind != TrackKind::Subtitle;
    state.rules = frameRules(its.codec);
    const bool isHevc = its.codec == "V_MPEGH/ISO/HEVC";
    if (!isHevc && its.codec != "V_MPEG4/ISO/AVC") return;
    forEachChild(entry, [&](const Element& child) {
        if (child.id != Id::CodecPrivate) return;
        state.nal =
            nalFormat(m_bytes.at(child.data, std::min<quint64>(child.size, kNalConfiguration)), isHevc);
    });
}

void MatroskaScan::readEncodings(const Element& encodings, Track& its, TrackState& state) {
    int count = 0;
    forEachChild(encodings, [&](const Element& encoding) {
        if (encoding.id != Id::ContentEncoding) return;
        quint64 scope = 1;
        quint64 type = 0;
        quint64 algorithm = 0;
        Element stripped;
        forEachChild(encoding, [&](const Element& part) {
            if (part.id == Id::ContentEncodingScope) scope = unsignedValue(m_bytes, part);
            if (part.id == Id::ContentEncodingType) type = unsignedValue(m_bytes, part);
            if (part.id != Id::ContentCompression) return;
            forEachChild(part, [&](const Element& setting) {
                if (setting.id == Id::ContentCompAlgo) algorithm = unsignedValue(m_bytes, setting);
                if (setting.id == Id::ContentCompSettings) stripped = setting;
            });
        });
        if ((scope & 1U) == 0) return;  // Of the codec's private data only.
        constexpr quint64 kHeaderStripping = 3;
        if (type != 0 || algorithm != kHeaderStripping || ++count > 1 || stripped.size > kLongestPrefix) {
            its.isEncoded = true;
            return;
        }
        const Bytes bytes = m_bytes.at(stripped.data, stripped.size);
        std::ranges::copy(bytes, state.prefix.begin());
        state.prefixLength = bytes.size();
    });
}

/// As the tool takes them: with a number, each behind the one before.
void MatroskaScan::readChapters(const Element& chapters) {
    forEachChild(chapters, [this](const Element& edition) {
        if (edition.id != Id::EditionEntry) return;
        forEachChild(edition, [this](const Element& atom) {
            if (atom.id != Id::ChapterAtom) return;
            quint64 uid = 0;
            std::optional<quint64> start;
            forEachChild(atom, [&](const Element& part) {
                if (part.id == Id::ChapterUid) uid = unsignedValue(m_bytes, part);
                if (part.id == Id::ChapterTimeStart) start = unsignedValue(m_bytes, part);
            });
            int& count = m_findings.reading.chapters;
            if (uid == 0 || !start || (m_lastChapter != 0 && *start <= m_lastChapter)) return;
            m_lastChapter = *start;
            count = std::min(count + 1, 65536);
        });
    });
}

void MatroskaScan::readAttachments(const Element& attachments) {
    forEachChild(attachments, [this](const Element& file) {
        if (file.id != Id::AttachedFile) return;
        forEachChild(file, [this](const Element& part) {
            if (part.id == Id::FileMimeType)
                m_findings.reading.hasCover |= textAt(m_bytes, part.data, part.size).starts_with("image/");
        });
    });
}

/// Returns where to go on: behind the cluster, or where another element begins.
quint64 MatroskaScan::readCluster(const Element& cluster) {
    const bool isKnown = !cluster.unknownSize;
    const quint64 end =
        isKnown ? std::min(cluster.end(), m_file.size()) : std::max(m_segmentEnd, cluster.data);
    m_clusterTime.reset();
    quint64 position = cluster.data;
    while (position < end && !m_file.isCancelled() && !m_file.hasFailed()) {
        const Element child = elementAt(m_bytes, position);
        const bool fits = child.isValid() && !child.unknownSize && child.end() <= end;
        if (fits && isInCluster(child.id)) {
            if (child.id == Id::SimpleBlock)
                readBlock(child, true, false, 0);
            else if (child.id == Id::BlockGroup)
                readBlockGroup(child);
            else if (child.id == Id::Timestamp)
                readTimestamp(child);
            position = child.end();
            continue;
        }
        if (child.isValid() && isTopLevel(child.id) && !isInCluster(child.id) && isPlausibleTopLevel(child)) {
            if (isKnown) damaged(Fault::BadElement, cluster.position);
            return position;
        }
        if (fits && (child.end() == end || isInCluster(elementAt(m_bytes, child.end()).id))) {
            position = child.end();  // Of a later version of the format.
            continue;
        }
        const bool isCutOff = child.isValid() && isInCluster(child.id) && !fits && end == m_file.size();
        const quint64 next = resynced(position + 1, isKnown ? end : 0);
        if (isCutOff && next >= m_file.size()) {
            m_declaredEnd = std::max(m_declaredEnd, m_file.size() + 1);
            return next;
        }
        const bool isNothing = isZero(m_bytes, position, std::min(position + kZerosOfRegion, end));
        damaged(isNothing ? Fault::Zeros : Fault::JunkBetweenElements, position);
        if (next >= end || !isKnown) return next;
        position = next;
    }
    if (isKnown && cluster.end() > m_file.size()) m_declaredEnd = std::max(m_declaredEnd, cluster.end());
    return position;
}

void MatroskaScan::readTimestamp(const Element& element) {
    m_clusterTime = static_cast<double>(unsignedValue(m_bytes, element));
    const double time = *m_clusterTime * m_scale;
    const double declared = m_durationInTicks * m_scale;
    const bool isFar = declared > 0 && time > std::max(declared, m_latest) + kBeyondDuration;
    if (time < m_latestCluster - kBackwards || isFar) damaged(Fault::ClusterOrder, element.position);
    if (!isFar) m_latestCluster = std::max(m_latestCluster, time);
}

void MatroskaScan::readBlockGroup(const Element& group) {
    Element block;
    double duration = 0;
    bool isKey = true;
    forEachChild(group, [&](const Element& child) {
        if (child.id == Id::Block) block = child;
        if (child.id == Id::BlockDuration)
            duration = static_cast<double>(unsignedValue(m_bytes, child)) * m_scale;
        if (child.id == Id::ReferenceBlock) isKey = false;
    });
    if (block.isValid()) readBlock(block, false, isKey, duration);
}

int MatroskaScan::indexOf(quint64 number) const {
    if (number < m_indices.size()) return m_indices[number];
    const auto& tracks = m_findings.reading.tracks;
    const auto found = std::ranges::find(tracks, number, &Track::number);
    return found == tracks.end() ? kNoTrack : static_cast<int>(found - tracks.begin());
}

void MatroskaScan::damaged(Fault fault, quint64 position) {
    m_findings.openDamage(fault, position, m_latest);
}

void MatroskaScan::sawTime(double time) {
    m_findings.closeDamage(time);
    m_latest = std::max(m_latest, time);
}

void MatroskaScan::readBlock(const Element& element, bool isSimple, bool isKey, double duration) {
    const Bytes header = m_bytes.at(element.data, std::min(element.size, kLongestBlockHeader));
    const ebml::Number number = ebml::number(header);
    if (number.length == 0 || header.size() < number.length + 3U)
        return damaged(Fault::BadElement, element.position);
    const int index = indexOf(number.value);
    if (index < 0) return damaged(Fault::UnknownTrack, element.position);

    BlockOfFrames block;
    block.track = static_cast<std::size_t>(index);
    block.position = element.position;
    block.data = element.data + number.length + 3;
    block.end = element.end();
    block.duration = duration;
    const auto ticks = static_cast<qint16>(bigEndian(header.subspan(number.length, 2)));
    if (m_clusterTime) {
        block.time = (*m_clusterTime + ticks) * m_scale - m_states[block.track].delay;
        sawTime(*block.time);
    }
    const unsigned flags = header[number.length + 2];
    block.lacing = flags >> 1U & 3U;
    block.isKey = isSimple ? (flags & kKeyFlag) != 0 : isKey;
    if (block.lacing == 0)
        readFrame(block, block.data, block.end, 0, duration);
    else if (!readLaces(block))
        damaged(Fault::BadLacing, block.position);
}

/// False: the sizes do not fit the block.
bool MatroskaScan::readLaces(const BlockOfFrames& block) {
    enum Lacing { Xiph = 1, FixedSize = 2 };
    if (block.data >= block.end) return false;
    std::array<quint64, 256> sizes = {};
    quint64 position = block.data;
    const std::size_t count = m_bytes.number(position++, 1) + 1;
    quint64 total = 0;
    for (std::size_t i = 0; i + 1 < count && block.lacing != FixedSize; ++i) {
        quint64& size = sizes.at(i);
        if (block.lacing == Xiph) {
            for (quint64 byte = 255; byte == 255; size += byte) {
                if (position >= block.end) return false;
                byte = m_bytes.number(position++, 1);
            }
        } else {
            const ebml::Number number =
                ebml::number(m_bytes.at(position, std::min<quint64>(block.end - position, 8)));
            if (number.length == 0) return false;
            position += number.length;
            // All but the first are differences, around the middle of what can be written.
            const quint64 middle = i == 0 ? 0 : (quint64{1} << (7 * number.length - 1)) - 1;
            size = number.value - middle + (i == 0 ? 0 : sizes.at(i - 1));
        }
        if (position > block.end || size > block.end - position) return false;
        total += size;
    }
    const quint64 room = block.end - position;
    if (block.lacing == FixedSize) {
        if (room % count != 0) return false;
        std::fill_n(sizes.begin(), count, room / count);
    } else {
        if (total > room) return false;
        sizes.at(count - 1) = room - total;
    }
    const double declared = m_states[block.track].defaultDuration;
    const double duration = block.duration > 0 ? block.duration / static_cast<double>(count) : declared;
    for (std::size_t i = 0; i < count; ++i) {
        readFrame(block, position, position + sizes.at(i), static_cast<double>(i) * duration, duration);
        position += sizes.at(i);
    }
    return true;
}

/// `delay`: seconds behind the block's time.
void MatroskaScan::readFrame(const BlockOfFrames& block, quint64 position, quint64 end, double delay,
                             double duration) {
    if (position >= end) return;
    Track& its = track(block.track);
    TrackState& state = m_states[block.track];
    if (block.isKey && its.keyFrames++ == 0) its.leadingFrames = its.frames;
    ++its.frames;
    its.bytes += end - position + state.prefixLength;
    if (state.looksInside) {
        const Bytes prefix = Bytes(state.prefix).first(state.prefixLength);
        if (const auto fault = faultInFrame(m_bytes, position, end, state.rules, state.nal, prefix))
            damaged(*fault, position);
    }
    if (!block.time) return;
    const double time = *block.time + delay;
    if (its.isText) {
        const bool isVisible =
            its.isEncoded || state.prefixLength > 0 || isVisibleEvent(state, position, end);
        addLine(its, m_findings.budget, {time, static_cast<float>(duration), isVisible});
    }
    if (duration <= 0) duration = state.defaultDuration;
    if (!state.times.add(time, duration, its, m_findings.budget))
        damaged(Fault::ClusterOrder, block.position);
}

bool MatroskaScan::isVisibleEvent(const TrackState& state, quint64 position, quint64 end) {
    for (unsigned fields = state.fieldsBeforeText; fields > 0 && position < end; ++position) {
        const Bytes byte = m_bytes.at(position, 1);
        if (byte.empty()) break;
        if (byte[0] == ',') --fields;
    }
    return hasVisibleText(m_bytes, position, end);
}

/// The next position, from `position` on, at which something sensible begins: an element of the top level, or
/// in front of `clusterEnd` a block. The file's size if there is nothing.
quint64 MatroskaScan::resynced(quint64 position, quint64 clusterEnd) {
    std::array<unsigned char, 4096> bytes = {};
    while (const std::size_t length = m_file.read(position, bytes)) {
        for (std::size_t i = 0; i < length; ++i) {
            const unsigned char first = bytes.at(i);
            const bool mayBeTopLevel = first >= 0x10 && first <= 0x1F;  // They have ids of four bytes.
            const bool mayBeBlock =
                position + i < clusterEnd && (first == Id::SimpleBlock || first == Id::BlockGroup);
            if (!mayBeTopLevel && !mayBeBlock) continue;
            if (mayBeTopLevel && i + 4 <= length &&
                !isTopLevel(static_cast<quint32>(bigEndian(Bytes(bytes).subspan(i, 4)))))
                continue;
            const Element element = elementAt(m_bytes, position + i);
            if (!element.isValid()) continue;
            if (mayBeTopLevel ? isTopLevel(element.id) && isPlausibleTopLevel(element)
                              : isPlausibleBlock(element, clusterEnd))
                return position + i;
        }
        position += length;
    }
    return m_file.size();
}

bool MatroskaScan::isPlausibleTopLevel(const Element& element) {
    const quint64 size = m_file.size();
    if (element.id == Id::Cluster) {
        const Element first = elementAt(m_bytes, element.data);
        return isInCluster(first.id) && (first.id != Id::Timestamp || first.size <= 8);
    }
    if (element.id == Id::Segment) return isTopLevel(elementAt(m_bytes, element.data).id);
    if (element.unknownSize || element.end() > size) return false;
    return element.end() == size || isTopLevel(elementAt(m_bytes, element.end()).id);
}

bool MatroskaScan::isPlausibleBlock(const Element& element, quint64 clusterEnd) {
    if (element.unknownSize || element.end() > clusterEnd) return false;
    Element block = element;
    if (element.id == Id::BlockGroup) {
        block = elementAt(m_bytes, element.data);
        if (block.id != Id::Block || block.unknownSize || block.end() > element.end()) return false;
    }
    const Bytes header = m_bytes.at(block.data, std::min(block.size, kLongestBlockHeader));
    const ebml::Number number = ebml::number(header);
    if (number.length == 0 || header.size() < number.length + 3U || indexOf(number.value) < 0) return false;
    if ((header[number.length + 2U] & kReservedFlags) != 0) return false;
    return element.end() == clusterEnd || isInCluster(elementAt(m_bytes, element.end()).id);
}

}  // namespace

Reading readMatroska(const QString& path, const Options& options, std::stop_token stop) {
    return std::make_unique<MatroskaScan>(path, options, std::move(stop))->run();
}

}  // namespace media
