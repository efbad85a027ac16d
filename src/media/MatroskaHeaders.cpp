#include "media/MatroskaScan.h"

namespace media {

using namespace matroska;
using ebml::Element;
using ebml::floatValue;
using ebml::unsignedValue;

namespace {

bool isTextCodec(const std::string& codec) {
    static constexpr const char* kCodecs[] = {"S_TEXT/UTF8", "S_TEXT/ASCII", "S_TEXT/SSA",   "S_TEXT/ASS",
                                              "S_SSA",       "S_ASS",        "S_TEXT/WEBVTT"};
    return std::ranges::find(kCodecs, codec) != std::end(kCodecs);
}

}  // namespace

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
    MatroskaTrack& state = m_states.emplace_back();
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

void MatroskaScan::readCodec(const Element& entry, Track& its, MatroskaTrack& state) {
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

void MatroskaScan::readEncodings(const Element& encodings, Track& its, MatroskaTrack& state) {
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
        if (type != 0 || algorithm != kHeaderStripping || ++count > 1 ||
            stripped.size > MatroskaTrack::kLongestPrefix) {
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

}  // namespace media
