#pragma once

#include "media/Ebml.h"
#include "media/Findings.h"
#include "media/FrameDigest.h"
#include "media/MatroskaIds.h"

#include <algorithm>
#include <array>
#include <utility>

namespace media {

/// What is needed of a track while blocks are read; beside the Track of the same index.
struct MatroskaTrack {
    static constexpr std::size_t kLongestPrefix = 16;  // Header stripping removes a few bytes.

    double defaultDuration = 0;  // Seconds
    double delay = 0;
    NalFormat nal;
    FrameRules rules;
    bool looksInside = true;
    unsigned fieldsBeforeText = 0;  // ASS: so many commas come first.
    std::array<unsigned char, kLongestPrefix> prefix = {};
    std::size_t prefixLength = 0;
    PresentationTimes times;
    FrameDigest digest;
};

/// One block while it is read.
struct MatroskaBlock {
    std::size_t track = 0;
    quint64 position = 0;
    quint64 data = 0;  // Of the lacing or the frame.
    quint64 end = 0;
    std::optional<double> time;  // Seconds; empty: the cluster has none.
    double duration = 0;         // Of all frames; 0: not given.
    unsigned lacing = 0;
    bool isKey = false;
};

/// One reading of a Matroska file: the headers in MatroskaHeaders.cpp, clusters in MatroskaBlocks.cpp.
class MatroskaScan {
public:
    MatroskaScan(const QString& path, const Options& options, std::stop_token stop)
        : m_file(path, std::move(stop), options.mayReadUpTo),
          m_bytes(m_file),
          m_checksFrames(options.checkFrames),
          m_digestsFrames(options.digestsFrames) {
        m_indices.fill(kNoTrack);
    }

    Reading run();

private:
    static constexpr qint16 kNoTrack = -1;
    static constexpr quint64 kLongestBlockHeader = 12;
    static constexpr int kZerosOfRegion = 8;

    template <typename Handle>
    void forEachChild(const ebml::Element& parent, const Handle& handle);
    quint64 readTopLevel(const ebml::Element& element);
    void readInfo(const ebml::Element& info);
    void readTrack(const ebml::Element& entry);
    void readCodec(const ebml::Element& entry, Track& track, MatroskaTrack& state);
    void readEncodings(const ebml::Element& encodings, Track& track, MatroskaTrack& state);
    void readChapters(const ebml::Element& chapters);
    void readAttachments(const ebml::Element& attachments);

    quint64 readCluster(const ebml::Element& cluster);
    void readTimestamp(const ebml::Element& element);
    void readBlockGroup(const ebml::Element& group);
    void readBlock(const ebml::Element& element, bool isSimple, bool isKey, double duration);
    bool readLaces(const MatroskaBlock& block);
    void readFrame(const MatroskaBlock& block, quint64 position, quint64 end, double delay, double duration);
    bool isVisibleEvent(const MatroskaTrack& state, quint64 position, quint64 end);

    quint64 resynced(quint64 position, quint64 clusterEnd);
    bool isPlausibleTopLevel(const ebml::Element& element);
    bool isPlausibleBlock(const ebml::Element& element, quint64 clusterEnd);

    int indexOf(quint64 number) const;
    void damaged(Fault fault, quint64 position);
    void sawTime(double time);
    Track& track(std::size_t index) { return m_findings.reading.tracks[index]; }

    File m_file;
    FileReader m_bytes;
    bool m_checksFrames;
    bool m_digestsFrames;
    Findings m_findings;
    std::vector<MatroskaTrack> m_states;
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
void MatroskaScan::forEachChild(const ebml::Element& parent, const Handle& handle) {
    const quint64 end = std::min(parent.unknownSize ? m_segmentEnd : parent.end(), m_file.size());
    for (quint64 position = parent.data; position < end && !m_file.isCancelled();) {
        const ebml::Element child = ebml::elementAt(m_bytes, position);
        if (!child.isValid() || child.unknownSize || child.end() > end) {
            if (!parent.unknownSize && parent.end() <= m_file.size()) damaged(Fault::BadElement, position);
            return;
        }
        handle(child);
        position = child.end();
    }
}

}  // namespace media
