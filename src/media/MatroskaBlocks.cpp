#include "media/MatroskaScan.h"
#include "media/VisibleText.h"

namespace media {

using namespace matroska;
using ebml::Element;
using ebml::elementAt;
using ebml::unsignedValue;

namespace {

constexpr double kBackwards = 10;         // seconds that a cluster may begin before an earlier one
constexpr double kBeyondDuration = 3600;  // seconds that a movie may go on behind its declared end
constexpr unsigned kKeyFlag = 0x80;

}  // namespace

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

    MatroskaBlock block;
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
bool MatroskaScan::readLaces(const MatroskaBlock& block) {
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
void MatroskaScan::readFrame(const MatroskaBlock& block, quint64 position, quint64 end, double delay,
                             double duration) {
    if (position >= end) return;
    Track& its = track(block.track);
    MatroskaTrack& state = m_states[block.track];
    if (block.isKey && its.keyFrames++ == 0) its.leadingFrames = its.frames;
    ++its.frames;
    its.bytes += end - position + state.prefixLength;
    if (state.looksInside) {
        const Bytes prefix = Bytes(state.prefix).first(state.prefixLength);
        if (const auto fault = faultInFrame(m_bytes, position, end, state.rules, state.nal, prefix))
            damaged(*fault, position);
    }
    if (m_digestsFrames) {
        state.digest.add(Bytes(state.prefix).first(state.prefixLength));
        state.digest.add(m_file, position, end);
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

bool MatroskaScan::isVisibleEvent(const MatroskaTrack& state, quint64 position, quint64 end) {
    for (unsigned fields = state.fieldsBeforeText; fields > 0 && position < end; ++position) {
        const Bytes byte = m_bytes.at(position, 1);
        if (byte.empty()) break;
        if (byte[0] == ',') --fields;
    }
    return hasVisibleText(m_bytes, position, end);
}

}  // namespace media
