#include "media/Findings.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace media {

namespace {

constexpr std::size_t kMostTracks = 256;
constexpr std::size_t kMostDamage = 1000;
constexpr quint64 kLongestText = 127;
constexpr quint64 kShortestZeroFrame = 16;
constexpr quint64 kLookedAt = 32;
constexpr double kOpen = std::numeric_limits<double>::infinity();
constexpr std::size_t kKindsAtOnce = 4;
constexpr double kOnePiece = 1;  // seconds between damage that is one piece

/// Looks at the first bytes, and at the others if those are zero.
bool isZeroFrame(FileReader& bytes, quint64 position, quint64 end) {
    if (end - position < kShortestZeroFrame) return false;
    const quint64 looked = std::min(position + kLookedAt, end);
    return isZero(bytes, position, looked) && isZero(bytes, looked, end);
}

}  // namespace

const char* name(Fault fault) {
    switch (fault) {
        case Fault::JunkBetweenElements:
            return "junk between elements";
        case Fault::Zeros:
            return "zeros between elements";
        case Fault::ClusterOrder:
            return "timestamps out of order";
        case Fault::BadElement:
            return "element longer than its parent";
        case Fault::BadLacing:
            return "bad lacing";
        case Fault::UnknownTrack:
            return "unknown track";
        case Fault::TruncatedFile:
            return "truncated file";
        case Fault::SampleOutsideFile:
            return "sample outside of the file";
        case Fault::EmptySample:
            return "empty sample";
        case Fault::ZeroSample:
            return "sample of zeros";
        case Fault::BadNalLength:
            return "bad NAL unit length";
        case Fault::BadSyncWord:
            return "frame without its sync word";
        case Fault::BadTable:
            return "bad sample table";
    }
    return "";
}

void Findings::addDamage(Fault fault, quint64 position, double from, double to) {
    to = std::max(from, to);
    // Damage of several kinds may alternate.
    const std::size_t first = reading.damage.size() - std::min(reading.damage.size(), kKindsAtOnce);
    for (std::size_t i = first; i < reading.damage.size(); ++i) {
        Damage& earlier = reading.damage[i];
        if (earlier.fault != fault || from < earlier.from || from > earlier.to + kOnePiece) continue;
        earlier.to = std::max(earlier.to, to);
        if (to == kOpen) m_firstOpen = std::min(m_firstOpen, i);
        return;
    }
    ++reading.damageTotal;
    if (reading.damage.size() >= kMostDamage) return;
    if (to == kOpen) m_firstOpen = std::min(m_firstOpen, reading.damage.size());
    reading.damage.push_back({from, to, position, fault});
}

void Findings::openDamage(Fault fault, quint64 position, double from) {
    addDamage(fault, position, from, kOpen);
}

void Findings::closeDamage(double to) {
    for (; m_firstOpen < reading.damage.size(); ++m_firstOpen) {
        Damage& damage = reading.damage[m_firstOpen];
        if (damage.to == kOpen) damage.to = std::max(damage.from, to);
    }
    m_firstOpen = std::numeric_limits<std::size_t>::max();
}

Track* Findings::addTrack() {
    if (reading.tracks.size() >= kMostTracks) return nullptr;
    return &reading.tracks.emplace_back();
}

Reading Findings::finished(File& file) {
    reading.opened = file.isOpen();
    reading.size = file.size();
    reading.cancelled = file.isCancelled();
    if (!reading.opened)
        reading.problem = Problem::CannotOpen;
    else if (file.hasFailed())
        reading.problem = Problem::CannotRead;
    return std::move(reading);
}

FrameRules frameRules(const std::string& codec) {
    static constexpr std::string_view kNeverZero[] = {
        "V_MPEG", "V_VP8",  "V_VP9",  "V_AV1",    "A_AAC",    "A_AC3", "A_EAC3", "A_DTS",
        "A_MPEG", "A_OPUS", "A_FLAC", "A_TRUEHD", "A_VORBIS", "avc",   "hvc1",   "hev1",
        "dvh",    "dva",    "mp4v",   "vp08",     "vp09",     "av01",  "mp4a",   "ac-3",
        "ec-3",   "Opus",   "fLaC",   "alac",     ".mp3",     "dts",   "mlpa"};
    static constexpr std::string_view kAc3[] = {"A_AC3", "A_EAC3", "ac-3", "ec-3"};
    constexpr unsigned kAc3Sync = 0x0B77;
    const auto begins = [&](std::string_view begin) { return codec.starts_with(begin); };
    return {std::ranges::any_of(kNeverZero, begins), std::ranges::any_of(kAc3, begins) ? kAc3Sync : 0};
}

std::optional<Fault> faultInFrame(FileReader& bytes, quint64 position, quint64 end, FrameRules rules,
                                  NalFormat units, Bytes prefix) {
    const bool hasUnits = units.lengthSize > 0;
    const bool isCut = hasUnits && !nalUnitsFill(bytes, position, end, units, prefix);
    const bool hasNoSync =
        rules.syncWord != 0 && prefix.empty() && bytes.number(position, 2) != rules.syncWord;
    // The units of a sound frame show that there is more than zeros.
    if ((isCut || (rules.isNeverZero && !hasUnits)) && isZeroFrame(bytes, position, end))
        return Fault::ZeroSample;
    if (isCut) return Fault::BadNalLength;
    return hasNoSync ? std::optional(Fault::BadSyncWord) : std::nullopt;
}

Reading withFramesOf(Reading reading, const Reading& other) {
    const auto isOfFrame = [](const Damage& damage) {
        return damage.fault == Fault::ZeroSample || damage.fault == Fault::BadNalLength ||
               damage.fault == Fault::BadSyncWord;
    };
    reading.cancelled |= other.cancelled;
    if (reading.problem == Problem::None) reading.problem = other.problem;
    if (std::ranges::none_of(other.damage, isOfFrame)) return reading;
    std::vector<Damage> all = std::move(reading.damage);
    const quint64 leftOut = reading.damageTotal - all.size();
    std::ranges::copy_if(other.damage, std::back_inserter(all), isOfFrame);
    std::ranges::stable_sort(all, {}, &Damage::from);
    Findings findings;
    for (const Damage& damage : all)
        findings.addDamage(damage.fault, damage.position, damage.from, damage.to);
    reading.damage = std::move(findings.reading.damage);
    reading.damageTotal = findings.reading.damageTotal + leftOut;
    return reading;
}

std::string textAt(FileReader& bytes, quint64 position, quint64 length) {
    const Bytes all = bytes.at(position, std::min(length, kLongestText));
    std::size_t end = static_cast<std::size_t>(std::ranges::find(all, 0) - all.begin());
    if (end == all.size() && length > end) {  // Not inside a character.
        while (end > 0 && (all[end - 1] & 0xC0U) == 0x80)
            --end;
        if (end > 0 && all[end - 1] >= 0xC0) --end;
    }
    return {reinterpret_cast<const char*>(all.data()), end};
}

}  // namespace media
