#pragma once

#include "probe/AudioEntry.h"
#include "probe/ReportParser.h"
#include "probe/Streams.h"
#include "probe/Verdicts.h"
#include "support/base/FileUrl.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <optional>
#include <vector>

/// The record of one movie: filled by the probe, completed when the movie is queued (destination, subtitle
/// file, access), read by the conversion. A value that may be copied between threads.
class MKVFileInfo {
public:
    QList<AudioEntry> audioTrackInformation;  ///< One entry for each audio stream, in the file's order.
    QList<int> subtitleTrackIDs;              ///< Subtitle streams that can be converted to text subtitles.
    QString informationString;                ///< One line for the user.
    QString fileName;                         ///< Last component of fileURL.
    FileUrl fileURL;
    FileUrl destinationURL;  ///< The path of the output; empty until the movie is queued.
    int videoTrackID = 0;
    QString videoTrackCodec;  ///< The tool's name of the codec.
    std::optional<qint32> runtimeSeconds;
    quint64 fileSize = 0;                    ///< Bytes; 0: unknown.
    std::optional<FileUrl> subtitleFileURL;  ///< A subtitle file to be added.
    std::optional<FileUrl> securityURL;      ///< The folder that was opened for the destination.
    MovieContents contents;                  ///< Every stream of the file, also those that are left out.
    QStringList warnings;                    ///< Of the probe, for the user; usually none.

    struct Probe;

    /// Runs the tool on the file and parses its report. Blocks until the tool has ended: call it outside the
    /// main thread. Shows no messages. When `*isCancelled` becomes true, the probe ends early and its result
    /// is meaningless; `isCancelled` may be null.
    static Probe probe(const FileUrl& url, const std::atomic<bool>* isCancelled = nullptr);

    /// The same, and delivers every message to the main thread. Empty for a movie that cannot be converted.
    static std::optional<MKVFileInfo> initWithURL(const FileUrl& url);

    /// The running time in whole seconds; -1 if it cannot be read. Blocks like probe(). Throws
    /// std::runtime_error if the tool cannot be started.
    static qint32 durationOfFile(const FileUrl& url);

    /// The record in several lines, for logs and problem reports.
    QString description() const;

    /// Lets what is equal in both records share its memory: the movies of a series have most in common.
    void shareWith(const MKVFileInfo& other);

private:
    static MKVFileInfo fromFacts(const ReportFacts& facts, const FileUrl& url);
};

/// The result of a probe: the record of an accepted movie, and the messages for the user.
struct MKVFileInfo::Probe {
    std::optional<MKVFileInfo> record;
    std::vector<Verdict> verdicts;
};
