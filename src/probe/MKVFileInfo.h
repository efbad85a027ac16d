#pragma once

#include "probe/AudioEntry.h"
#include "probe/ReportParser.h"
#include "probe/Verdicts.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <atomic>
#include <optional>
#include <vector>

/// The probe's record of one movie. Filled whole by the probe, completed by the step that queues it
/// (destination, subtitle file, access), read by the conversion. A value: it is copied from thread to thread.
class MKVFileInfo {
public:
    QList<AudioEntry> audioTrackInformation;  ///< One entry for each audio stream, in the file's order.
    QList<int> subtitleTrackIDs;              ///< Streams of subtitles that can be carried over as text.
    QString informationString;                ///< One line for the user.
    QString fileName;                         ///< Last component of fileURL.
    QUrl fileURL;
    QUrl destinationURL;  ///< Where the output goes; empty until the movie is queued.
    int videoTrackID = 0;
    QString videoTrackCodec;  ///< The tool's name of the codec.
    std::optional<qint32> runtimeSeconds;
    quint64 fileSize = 0;                 ///< Bytes; 0: unknown.
    std::optional<QUrl> subtitleFileURL;  ///< A subtitle file to be added.
    std::optional<QUrl> securityURL;      ///< The folder that was opened for the destination.

    struct Probe;

    /// Has the tool describe the file and reads the description. Blocks until the tool has ended: call it off
    /// the main thread. Shows nothing.
    /// `isCancelled` becoming true ends the probe early, with nothing of use; may be null.
    static Probe probe(const QUrl& url, const std::atomic<bool>* isCancelled = nullptr);

    /// The same, with every message to the user on its way to the main thread. Nothing for a movie that
    /// cannot be converted.
    static std::optional<MKVFileInfo> initWithURL(const QUrl& url);

    /// The running time in whole seconds, -1 when it cannot be read. Blocks like probe(). Throws
    /// std::runtime_error when the tool cannot be started.
    static qint32 durationOfFile(const QUrl& url);

    /// The record in several lines, for logs and problem reports.
    QString description() const;

private:
    static MKVFileInfo fromFacts(const ReportFacts& facts, const QUrl& url);
};

/// A probe's outcome: the record of an accepted movie, and what the user should be told.
struct MKVFileInfo::Probe {
    std::optional<MKVFileInfo> record;
    std::vector<Verdict> verdicts;
};
