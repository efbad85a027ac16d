#pragma once

#include "cli/JsonRecords.h"
#include "cli/Run.h"
#include "probe/MKVFileInfo.h"

#include <QString>

#include <optional>

/// A movie that was probed for a command that converts nothing.
struct ProbedMovie {
    QString file;                        ///< Absolute path.
    std::optional<MKVFileInfo> record;   ///< Empty: the movie is refused, `messages` say why.
    std::optional<qsizetype> bestTrack;  ///< Position of the preselected audio track.
    json::Messages messages;
};

/// Probes a movie and collects its messages. Those of a refused movie are written to standard error, too, and
/// all if the result is printed `asJson`. Blocks until the probe has ended; main thread only.
ProbedMovie probeMovie(const QString& path, bool asJson, Run& run);

/// A movie that is refused without a probe; writes the reason to standard error.
ProbedMovie refusedMovie(const QString& path, const QString& reason);

/// The warnings of a movie, as lines of its description.
void printMessages(const ProbedMovie& movie);
