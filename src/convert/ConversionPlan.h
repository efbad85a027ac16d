#pragma once

#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// Why a stream is left out.
enum class LeftOutReason {
    None,  ///< It is carried.
    CoverPicture,
    FurtherVideo,
    FurtherAudio,
    PictureSubtitles,
    StyledSubtitles,
    OtherSubtitles,  ///< Of a format that is not converted.
    SwitchedOff,     ///< By the setting DisableBuiltinSubtitles.
    NoSound,         ///< A movie without sound carries no subtitles.
    Remedy,          ///< By the remedies of this conversion.
    Attachment,
    Data,
};

/// What a carried audio track is made into.
struct PlannedAudio {
    ConversionMethod method = ConversionMethod::Copy;
    QString rate;                 ///< The tool's word: "128k", or a level such as "5"; empty for a copy.
    int sampleRate = 0;           ///< Hz; 0: as in the movie.
    std::optional<float> volume;  ///< A factor; empty: as in the movie.
    bool isSecond = false;        ///< The surround track beside the main one.

    bool operator==(const PlannedAudio&) const = default;
};

/// What becomes of one stream of the movie, or of the subtitle file.
struct PlannedTrack {
    using Kind = StreamKind;
    enum class Action { Copied, Converted, LeftOut };

    std::optional<int> stream;  ///< The stream's number in the movie; empty: the subtitle file.
    Kind kind = Kind::Data;
    QString codec;     ///< The tool's name.
    QString language;  ///< As in the movie; may be empty.
    QString title;     ///< As in the movie; may be empty. Of attachments and the subtitle file, the name.
    QString format;  ///< In words, the picture's size or the sound's channels: "1080p", "5.1"; may be empty.
    Action action = Action::LeftOut;
    QString to;      ///< What it is converted into, in words; empty unless it is converted.
    QString reason;  ///< Why it is left out, in words; empty unless it is.
    LeftOutReason leftOutReason = LeftOutReason::None;
    std::optional<PlannedAudio> audio;  ///< Of a carried audio track.
    /// The number of the stream in the output; empty if it is left out.
    std::optional<int> output;

    bool operator==(const PlannedTrack&) const = default;
};

/// Variations of a conversion, for movies with which the usual one fails. None of them by default.
struct Remedies {
    bool keepsSubtitleDurations = false;    ///< Without "-fix_sub_duration", whatever the setting.
    bool fineSubtitleTimes = false;         ///< With "-time_base:s 1/100000".
    bool namesFormat = false;               ///< With "-f mp4", for an output of another extension.
    bool longMuxingQueue = false;           ///< With room for 65536 packets instead of 2048.
    bool withoutEmbeddedSubtitles = false;  ///< Whatever the setting.
    bool withoutSubtitleFile = false;
    /// The subtitle file's encoding, as the tool names it, instead of the setting's; empty text: the tool's
    /// default.
    std::optional<QString> subtitleEncoding = {};

    bool operator==(const Remedies&) const = default;
};

/// What a conversion will do with a movie. A value; any thread.
struct ConversionPlan {
    /// In the order of the streams, the subtitle file last. A stream that is carried twice is listed twice.
    QList<PlannedTrack> tracks;
    bool carriesChapters = false;
    int chapterCount = 0;
    QString title;  ///< The movie's own, which is carried; may be empty.

    // The tool's options that are not those of a track.
    QString subtitleEncoding;  ///< Of the subtitle file, as the tool names it; empty: the tool's default.
    bool fixesSubtitleDurations = false;
    bool tagsHevc = false;  ///< With the tag without which players of one vendor refuse HEVC.
    bool isStreamable = false;
    bool fineSubtitleTimes = false;
    bool namesFormat = false;
    bool longMuxingQueue = false;

    /// The carried tracks in the order of the output's streams. They point into this plan.
    QList<const PlannedTrack*> outputs() const;
};

/// Decides what becomes of each stream. `audioTrackIndex` is a position in audioTrackInformation. Which
/// streams can be carried is read from the record; `info.contents` adds the descriptions and the streams that
/// are left out. Pure; any thread.
ConversionPlan makePlan(const MKVFileInfo& info, qsizetype audioTrackIndex, const ConversionSettings& chosen,
                        const Remedies& remedies = {});

/// The chosen entry; null for a movie without audio or an index out of range.
const AudioEntry* chosenAudio(const MKVFileInfo& info, qsizetype audioTrackIndex);
