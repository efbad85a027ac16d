#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

/// Readers of movie files: what the headers, the frame headers and the sample tables of a file say about its
/// tracks, and where the file contradicts itself. Nothing is decoded.
///
/// Any input is allowed. A reading takes less than 2 MiB of memory whatever the file contains, opens the file
/// read-only, needs no event loop, blocks neither on FIFOs nor on devices and may run in any thread. Two
/// readings share nothing.
namespace media {

enum class Container { Unknown, Matroska, Mp4 };
enum class TrackKind { Other, Video, Audio, Subtitle };

/// Why there is no complete reading.
enum class Problem {
    None,
    CannotOpen,       ///< Not there, no permission, not a regular file.
    CannotRead,       ///< A read failed (EIO). What was read until then is in the reading.
    UnknownFormat,    ///< None of the containers.
    NoTracks,         ///< The container is known, but no description of tracks was found: MP4 without "moov".
    CompressedIndex,  ///< MP4 whose "moov" is compressed, which is not read.
};

/// What is wrong at a position of the file.
enum class Fault {
    JunkBetweenElements,  ///< Bytes that are no element of the container.
    Zeros,                ///< The same, and they are zero: never written, or overwritten.
    ClusterOrder,         ///< Timestamps go back, or jump far beyond the declared duration.
    BadElement,           ///< An element that is longer than the one that contains it.
    BadLacing,            ///< The sizes of the frames in a block do not fit the block.
    UnknownTrack,         ///< A block or fragment of a track that was not declared.
    TruncatedFile,        ///< The file ends inside an element, or before the declared end.
    SampleOutsideFile,    ///< A sample that begins or ends behind the end of the file.
    EmptySample,          ///< MP4: a sample without bytes where the codec has no empty ones.
    ZeroSample,           ///< A frame or sample of zeros only.
    BadNalLength,         ///< The NAL units of a frame do not fill it, or one has an impossible header.
    BadSyncWord,          ///< A frame of AC-3 or E-AC-3 that does not begin as each of them does.
    BadTable,             ///< The sample tables contradict each other, the file's size or their box.
};
/// A word for the log: "junk between elements".
const char* name(Fault fault);

/// A conspicuous gap between consecutive frames, in seconds of presentation time: longer than 0.25 s and
/// than six of the pictures' durations around it. A movie of variable frame rate may have some and be whole.
struct Hole {
    double from = 0;
    double to = 0;
};

struct Damage {
    double from = 0;  ///< Seconds: the last timestamp in front of it. Both are 0 where no time is known.
    double to =
        0;  ///< Seconds: the first timestamp behind it; at the end of the file the duration, if known.
    quint64 position = 0;  ///< The offset in the file where it begins.
    Fault fault = Fault::JunkBetweenElements;
};

/// One event of a text subtitle track or subtitle file.
struct Line {
    double start = 0;    ///< Seconds.
    float duration = 0;  ///< Seconds; 0: not known.
    bool visible =
        true;  ///< Has more than white space and markup. True, too, where the text cannot be looked at.

    double end() const { return start + static_cast<double>(duration); }
};

struct Track {
    int index =
        0;  ///< The index that the tool gives the stream, from 0; -1: it makes no stream of the track.
    quint64 number = 0;  ///< Matroska: TrackNumber. MP4: track_ID.
    TrackKind kind = TrackKind::Other;
    std::string codec;     ///< Matroska: CodecID, "V_MPEG4/ISO/AVC". MP4: the sample entry's type, "avc1".
    std::string language;  ///< "eng", "und"; empty if not given. Matroska: BCP 47 where the file has it.
    std::string name;      ///< UTF-8, at most 127 bytes.

    /// Matroska: frames with at least one byte, each frame of a laced block counted. MP4: samples, empty ones
    /// included. In raw PCM tracks of MP4 a sample is one value for each channel.
    quint64 frames = 0;
    quint64 keyFrames = 0;
    /// Video: frames in front of the first key frame that the container marks. A stream copy leaves them out,
    /// unless the tool sees a key frame in the pictures themselves earlier.
    quint64 leadingFrames = 0;
    /// MP4: samples that the edit list leaves out, which a copy of the stream may leave out, too.
    quint64 hiddenFrames = 0;
    /// Sum of the frames' sizes; Matroska: with the bytes that header stripping removed.
    quint64 bytes = 0;
    /// With Options::digestsFrames: the SHA-1 of all frames, one behind the other. Empty where they were not
    /// read: without frames, and in raw PCM tracks of MP4.
    QByteArray digest;

    /// Seconds: the smallest presentation time, and the greatest one plus duration. Empty without frames.
    /// Matroska: CodecDelay is subtracted; a frame lasts as long as the block or the track says, or else as
    /// the frame before it. MP4: as the edit list says; what it leaves out does not count.
    std::optional<double> start;
    std::optional<double> end;
    /// Video, and sound in MP4: ordered. At most 4,000 in a reading, `holesLeftOut` counts the rest.
    std::vector<Hole> holes;
    quint64 holesLeftOut = 0;
    /// With the holes: so many frames are missing where the duration of a frame is constant before and behind
    /// a gap of two of them or more that is too short for a hole. Losses only if the frame rate cannot vary.
    /// 0 where two frames have the same time: such times were guessed, and gaps make up for them.
    quint64 skippedFrames = 0;
    /// Text subtitles: in the file's order, at most 50,000 in a reading; `linesLeftOut` counts the rest. MP4:
    /// samples without text are gaps and no lines.
    std::vector<Line> lines;
    quint64 linesLeftOut = 0;
    bool isText = false;  ///< A subtitle track of text, for which there are lines.
    /// Matroska: compressed (not only by header stripping) or encrypted; what is in the frames is not looked
    /// at.
    bool isEncoded = false;

    bool isEnabled = true;
    bool isDefault = false;   ///< Matroska: FlagDefault.
    bool isForced = false;    ///< Matroska: FlagForced.
    bool isChapters = false;  ///< MP4: the text track that others refer to for their chapters.
    int width = 0;            ///< Pixels.
    int height = 0;
    int channels = 0;
    double sampleRate = 0;  ///< Hz.

    /// MP4: the offsets in the file of the byte with the enabled flag (bit 0) and of the two bytes of
    /// alternate_group, big-endian; 0 where there are none.
    quint64 enabledPosition = 0;
    quint64 alternateGroupPosition = 0;
    int alternateGroup = 0;
};

struct Reading {
    Container container = Container::Unknown;
    bool opened = false;
    bool cancelled =
        false;  ///< The caller stopped it; the rest is what was read until then, damage at the end included.
    Problem problem = Problem::None;
    quint64 size = 0;  ///< Of the file in bytes, when it was opened.

    std::vector<Track> tracks;       ///< In the file's order, at most 256.
    std::vector<Damage> damage;      ///< In the order of detection, at most 1,000.
    quint64 damageTotal = 0;         ///< Also what was left out.
    std::optional<double> duration;  ///< Seconds, as the file declares it.
    int chapters = 0;                ///< Those that the tool takes over.
    bool hasIndex = false;           ///< Matroska: has Cues. MP4: has a whole "moov".
    bool hasCover = false;           ///< An attached picture outside of the tracks.

    bool isComplete() const { return opened && !cancelled && problem == Problem::None; }
};

struct Options {
    /// Look at the first bytes of each frame: NAL unit lengths, zeros. Without it an MP4 file's
    /// samples are not read, its tables are.
    bool checkFrames = true;
    /// Read all bytes of each frame, for Track::digest.
    bool digestsFrames = false;
    /// MP4: a second thread looks at half of the frames. `mayReadUpTo` is then called in both.
    bool usesTwoThreads = false;
    /// Called in the reading thread before bytes up to `position` are read for the first time, every 4 MiB.
    /// May block until the caller wants them read; false cancels the reading. A Matroska file is read front
    /// to back, an MP4 file is not.
    std::function<bool(quint64 position)> mayReadUpTo;
};

/// Looks at the first bytes for the container.
Reading read(const QString& path, const Options& options = {}, std::stop_token stop = {});
Reading readMatroska(const QString& path, const Options& options = {}, std::stop_token stop = {});
Reading readMp4(const QString& path, const Options& options = {}, std::stop_token stop = {});

}  // namespace media
