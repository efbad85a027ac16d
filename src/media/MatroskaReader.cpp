#include "media/MatroskaScan.h"

#include <memory>

namespace media {

using namespace matroska;
using ebml::Element;
using ebml::elementAt;

namespace {

constexpr unsigned kReservedFlags = 0x70;

}  // namespace

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
        done.digest = m_states[i].digest.result();
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

Reading readMatroska(const QString& path, const Options& options, std::stop_token stop) {
    return std::make_unique<MatroskaScan>(path, options, std::move(stop))->run();
}

}  // namespace media
