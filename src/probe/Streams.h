#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

enum class StreamKind { Video, Audio, Subtitle, Attachment, Data };

/// One stream of a movie as the tool reports it. Texts are as in the file, and may be empty. A value; any
/// thread.
struct MovieStream {
    int index = 0;  ///< The stream's number in the file.
    StreamKind kind = StreamKind::Data;
    QString codec;     ///< The tool's name: "h264", "hdmv_pgs_subtitle"; "none" if the tool does not know it.
    QString profile;   ///< "High 10", "DTS-HD MA"
    QString language;  ///< "eng"
    QString title;     ///< May contain line breaks.
    QStringList dispositions;  ///< The tool's words: "default", "forced", "comment", "attached pic" …

    int width = 0;  ///< Pixels; 0: unknown or no picture.
    int height = 0;
    bool isInterlaced = false;
    int sampleRate = 0;     ///< Hz; 0: unknown or no sound.
    QString channelLayout;  ///< "stereo", "5.1(side)", "3 channels"
    int channels = 0;       ///< 0: unknown or no sound.
    qint64 bitRate = 0;     ///< Bits per second; 0: unknown.

    /// From the statistics that some programs write into the file. They may be wrong if another program has
    /// changed the file since.
    std::optional<quint64> frameCount;  ///< Pictures, audio frames or subtitles.
    std::optional<double> seconds;      ///< The stream's end.

    QString mimeType;  ///< Of attachments and cover pictures.
    QString fileName;
    bool isCover = false;  ///< A picture about the movie, not of it.

    bool isDefault() const { return dispositions.contains(QStringLiteral("default")); }
    bool isForced() const { return dispositions.contains(QStringLiteral("forced")); }
    bool isCommentary() const { return dispositions.contains(QStringLiteral("comment")); }

    bool operator==(const MovieStream&) const = default;
};

/// What a movie file contains. A value; any thread.
struct MovieContents {
    QString formatName;  ///< The tool's name of the container: "matroska,webm"; may be empty.
    QString title;       ///< Of the movie itself; may be empty, may contain line breaks.
    int chapterCount = 0;
    QList<MovieStream> streams;  ///< In the order of their numbers, each number once.

    /// Null: there is no such stream.
    const MovieStream* stream(int index) const;

    /// Forgets the bit rates and the statistics of the streams, which differ from movie to movie of a series.
    void dropStatistics();
    /// Lets what is equal in both share its memory.
    void shareWith(const MovieContents& other);

    bool operator==(const MovieContents&) const = default;
};

/// Parses what the tool prints for an input without an output: lines of "Input #0, ...", "Chapter #0:0...",
/// "Stream #0:1(eng): Audio: ...", each followed by its "Metadata:", which is indented further. Text within
/// the metadata is never taken for a stream. `fileName` is the last component of the movie's path, which is
/// part of the report. Pure, any thread; linear in the length of the report.
MovieContents parseContents(QStringView report, QStringView fileName);
