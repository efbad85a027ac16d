#pragma once

#include "probe/AudioEntry.h"
#include "probe/Streams.h"
#include "probe/Verdicts.h"
#include "settings/Snapshot.h"

#include <QList>
#include <QString>

#include <optional>
#include <vector>

/// The facts that the tool's report contains about a file.
struct ReportFacts {
    std::optional<int> videoTrackID;  ///< Empty: there is no usable stream.
    QString videoTrackCodec;
    QList<AudioEntry> audioTracks;
    QList<int> subtitleTrackIDs;  ///< Streams that can be converted to text subtitles.
    int subtitleCount = 0;        ///< All subtitle streams.
    std::optional<qint32> runtimeSeconds;
    std::optional<QString> duration;    ///< As in the report, without the fraction: "01:42:17".
    std::optional<QString> bitrate;     ///< As in the report: "4712 kb/s".
    std::optional<QString> resolution;  ///< "1920x1080"
    MovieContents contents;             ///< All streams; empty for a rejected movie.
    bool rejected = false;              ///< The movie cannot be converted.
    std::vector<Verdict> verdicts;      ///< In the order of the report.

    QString informationString() const;
};

/// Parses what the tool prints for an input without an output: lines of "Duration: ..." and "Stream
/// #0:1(eng): Audio: ...", each followed by its metadata. Pure, any thread; linear in the length of the
/// report. `chosen` decides how audio streams are classified; `fileName` is used in the messages of the
/// verdicts.
ReportFacts parseReport(const QString& report, const settings::Snapshot& chosen, const QString& fileName);

/// The whole seconds of the report's only "Duration: " line; -1 if there is not exactly one or it contains no
/// time.
qint32 durationInReport(const QString& report);
