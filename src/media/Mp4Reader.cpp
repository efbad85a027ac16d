#include "media/Mp4Scan.h"

#include <algorithm>
#include <thread>

namespace media {

using mp4::Box;
using mp4::Boxes;
using mp4::fourCc;

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

void Mp4Scan::finishTracks() {
    Reading& reading = m_findings.reading;
    reading.chapters = m_listedChapters;
    for (std::size_t i = 0; i < m_states.size(); ++i) {
        Track& done = track(i);
        m_states[i].times.finish(done, m_findings.budget);
        done.digest = m_states[i].digest.result();
        if (done.keyFrames == 0) done.leadingFrames = done.frames;
        if (done.kind != TrackKind::Video) done.leadingFrames = 0;
        if (std::ranges::find(m_chapterTracks, done.number) == m_chapterTracks.end()) continue;
        done.isChapters = true;
        done.kind = TrackKind::Other;
        reading.chapters =
            std::max(reading.chapters, static_cast<int>(std::min<quint64>(done.frames, 65536)));
    }
}

Reading readMp4(const QString& path, const Options& options, std::stop_token stop) {
    const auto scan = std::make_unique<Mp4Scan>(path, options, stop);
    if (!scan->hasOtherShare()) return scan->run();
    const auto helper = std::make_unique<Mp4Scan>(path, options, std::move(stop));
    helper->takeOtherShare();
    Reading other;
    std::jthread thread([&] { other = helper->run(); });
    Reading reading = scan->run();
    thread.join();
    return withFramesOf(std::move(reading), other);
}

}  // namespace media
