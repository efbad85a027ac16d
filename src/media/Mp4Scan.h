#pragma once

#include "media/Findings.h"
#include "media/FrameDigest.h"
#include "media/Mp4Boxes.h"
#include "media/SampleTable.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace media {

/// A part of the track's media and where it is presented; in the units of the file.
struct Mp4Edit {
    double start = 0;
    double length = 0;
    double media = 0;
};

/// How the samples of a fragment are unless it says otherwise.
struct Mp4FragmentDefaults {
    quint32 description = 0;
    quint32 duration = 0;
    quint32 size = 0;
    quint32 flags = 0;
};

/// What is needed of a track while its samples are read; beside the Track of the same index.
struct Mp4Track {
    mp4::SampleTables tables;
    double timeScale = 0;  // Units in a second.
    std::vector<Mp4Edit> edits;
    NalFormat nal;
    FrameRules rules;
    quint64 rawPacketSamples = 0;  // QuickTime: so many samples take
    quint64 rawPacketBytes = 0;    // so many bytes.
    quint32 handler = 0;
    Mp4FragmentDefaults defaults;
    quint64 nextTime = 0;  // Of the next fragment.
    PresentationTimes times;
    FrameDigest digest;
    bool isBeyondFile = false;  // It has more bytes than the file: its tables are not believed any longer.
    std::unique_ptr<mp4::SampleTable> table;
    mp4::Chunk chunk;
};

/// One reading of an MP4 or QuickTime file: the boxes of "moov" in Mp4Movie.cpp, the samples in
/// Mp4Samples.cpp, fragments in Mp4Fragments.cpp.
class Mp4Scan {
public:
    Mp4Scan(const QString& path, const Options& options, std::stop_token stop)
        : m_file(path, std::move(stop), options.mayReadUpTo),
          m_bytes(m_file),
          m_frames(m_file),
          m_checksFrames(options.checkFrames),
          m_digestsFrames(options.digestsFrames),
          m_shares(options.usesTwoThreads ? 2 : 1) {}

    /// Whether there are frames of the other share.
    bool hasOtherShare() const { return m_shares > 1 && m_file.size() > kStripe; }

    /// Looks at the other frames, of the half that the scan leaves out otherwise. Keeps no lines.
    void takeOtherShare() {
        m_share = 1;
        m_findings.budget.lines = 0;
    }

    Reading run();

private:
    static constexpr quint64 kStripe = quint64{16} << 20U;  // bytes of the file that one thread looks at
    /// Behind any file; what is added does not overflow.
    static constexpr quint64 kFarthest = quint64{1} << 62U;

    void readMovie(const mp4::Box& movie);
    void readMovieHeader(const mp4::Box& box);
    void readTrack(const mp4::Box& box);
    void readTrackHeader(const mp4::Box& box, Track& track);
    void readEdits(const mp4::Box& edits, Mp4Track& state);
    void readMedia(const mp4::Box& media, Track& track, Mp4Track& state);
    void readMediaHeader(const mp4::Box& box, Track& track, Mp4Track& state);
    void readTables(const mp4::Box& tables, Track& track, Mp4Track& state);
    void readDescription(const mp4::Box& box, Track& track, Mp4Track& state);
    void readVideoEntry(const mp4::Box& entry, Track& track, Mp4Track& state);
    void readAudioEntry(const mp4::Box& entry, Track& track, Mp4Track& state);
    void readSizes(const mp4::Box& box, bool isCompact, Mp4Track& state);
    mp4::TableLocation entries(const mp4::Box& box, quint64 entrySize);
    void readUserData(const mp4::Box& box);
    void finishTracks();

    void readSamples();
    void readChunk(std::size_t index);
    void readRawChunk(Track& track, Mp4Track& state);
    void finishTable(std::size_t index);
    bool addSample(Track& its, Mp4Track& state, const mp4::Sample& sample, bool isFirstDescription);
    void checkFrame(const Mp4Track& state, const mp4::Sample& sample, double from, double to);
    std::optional<std::pair<double, double>> presented(const Mp4Track& state,
                                                       const mp4::Sample& sample) const;

    void readFragment(const mp4::Box& fragment);
    void readTrackFragment(const mp4::Box& box, quint64 fragment, quint64& dataEnd);
    void readRun(const mp4::Box& box, std::size_t index, const Mp4FragmentDefaults& defaults, quint64 base,
                 quint64& offset);

    void damaged(Fault fault, quint64 position, double from = 0, double to = 0) {
        m_findings.addDamage(fault, position, from, to);
    }
    quint64 number(quint64 position, std::size_t length, const mp4::Box& box) {
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
    bool m_digestsFrames;
    unsigned m_shares;  // In how many scans look at the frames, and
    unsigned m_share = 0;
    Findings m_findings;
    std::vector<Mp4Track> m_states;
    std::vector<quint64> m_chapterTracks;
    int m_listedChapters = 0;
    double m_movieScale = 0;  // Units in a second.
    quint64 m_allBytes = 0;   // Of all tracks' samples.
    double m_end = 0;         // Of the presentation of all tracks, as far as it was read; seconds.
    bool m_hasMovie = false;
};

}  // namespace media
