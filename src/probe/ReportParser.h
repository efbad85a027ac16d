#pragma once

#include "probe/AudioEntry.h"
#include "probe/Verdicts.h"
#include "settings/Snapshot.h"

#include <QList>
#include <QString>

#include <optional>
#include <vector>

/// What the tool's report says about a file.
struct ReportFacts {
    std::optional<int> videoTrackID;  ///< None: no stream that could be kept.
    QString videoTrackCodec;
    QList<AudioEntry> audioTracks;
    QList<int> subtitleTrackIDs;  ///< Streams that can be carried over as text.
    int subtitleCount = 0;        ///< All subtitle streams.
    std::optional<qint32> runtimeSeconds;
    std::optional<QString> duration;    ///< As the report writes it, without the fraction: "01:42:17".
    std::optional<QString> bitrate;     ///< As the report writes it: "4712 kb/s".
    std::optional<QString> resolution;  ///< "1920x1080"
    bool rejected = false;              ///< The movie cannot be converted.
    std::vector<Verdict> verdicts;      ///< In the order in which they were taken.

    QString informationString() const;
};

/// Reads what the tool prints when it is given an input and no output: lines of "Duration: ..." and "Stream
/// #0:1(eng): Audio: ...", each followed by its metadata. Pure; linear in the length of the report.
/// `chosen` decides how audio streams are classified; `fileName` is for the verdicts' texts.
ReportFacts parseReport(const QString& report, const settings::Snapshot& chosen, const QString& fileName);

/// The whole seconds of the report's only "Duration: " line; -1 when there is not exactly one or it has no
/// time.
qint32 durationInReport(const QString& report);
