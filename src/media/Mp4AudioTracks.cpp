#include "media/Mp4AudioTracks.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace media {

namespace {

class Patch {
public:
    explicit Patch(const QString& path)
        : m_file(::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
    ~Patch() {
        if (m_file >= 0) ::close(m_file);
    }
    Patch(const Patch&) = delete;
    Patch& operator=(const Patch&) = delete;

    bool isOpen() const { return m_file >= 0; }
    template <std::size_t Length>
    std::array<unsigned char, Length> bytes(quint64 position) const {
        std::array<unsigned char, Length> read = {};
        if (::pread(m_file, read.data(), Length, static_cast<off_t>(position)) !=
            static_cast<ssize_t>(Length))
            return {};
        return read;
    }
    template <std::size_t Length>
    bool write(quint64 position, const std::array<unsigned char, Length>& bytes) const {
        return ::pwrite(m_file, bytes.data(), Length, static_cast<off_t>(position)) ==
               static_cast<ssize_t>(Length);
    }

private:
    int m_file;
};

/// Whether the track's header is where it was, with what was read from it.
bool isAsRead(const Patch& file, const Track& track) {
    if (track.enabledPosition < 7 || track.alternateGroupPosition == 0) return false;
    const auto header = file.bytes<8>(track.enabledPosition - 7);  // Type, version and flags.
    const auto group = file.bytes<2>(track.alternateGroupPosition);
    return std::equal(header.begin(), header.begin() + 4, "tkhd") &&
           (header[7] & 1U) == (track.isEnabled ? 1U : 0U) &&
           (group[0] << 8U | group[1]) == track.alternateGroup;
}

}  // namespace

PatchResult enableFirstAudioTrackOnly(const QString& path, const Reading& reading) {
    std::vector<const Track*> audio;
    int group = 0;
    int greatest = 0;
    for (const Track& track : reading.tracks) {
        greatest = std::max(greatest, track.alternateGroup);
        if (track.kind != TrackKind::Audio) continue;
        if (audio.empty()) group = track.alternateGroup;
        audio.push_back(&track);
    }
    const bool isShared = std::ranges::any_of(reading.tracks, [group](const Track& track) {
        return track.kind != TrackKind::Audio && track.alternateGroup == group;
    });
    if (group == 0 || isShared) group = greatest < 0x7FFF ? greatest + 1 : 0x7FFF;
    const auto isRight = [&](const Track* track) {
        return track->alternateGroup == group && track->isEnabled == (track == audio.front());
    };
    if (audio.size() < 2 || std::ranges::all_of(audio, isRight)) return PatchResult::Unchanged;

    const Patch file(path);
    if (!file.isOpen()) return PatchResult::Failed;
    if (!std::ranges::all_of(audio, [&](const Track* track) { return isAsRead(file, *track); }))
        return PatchResult::NotAsRead;
    for (const Track* track : audio) {
        const auto flags = file.bytes<1>(track->enabledPosition)[0];
        const bool isFirst = track == audio.front();
        const auto enabled = static_cast<unsigned char>(isFirst ? flags | 1U : flags & 0xFEU);
        const std::array<unsigned char, 2> number = {static_cast<unsigned char>(group >> 8),
                                                     static_cast<unsigned char>(group)};
        if (!file.write<1>(track->enabledPosition, {enabled}) ||
            !file.write<2>(track->alternateGroupPosition, number))
            return PatchResult::Failed;
    }
    return PatchResult::Changed;
}

}  // namespace media
