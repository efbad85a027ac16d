#pragma once

#include "convert/proof/Receipt.h"
#include "media/AviPictures.h"
#include "media/Reading.h"

#include <QString>

#include <optional>
#include <vector>

/// Compares the output of a conversion with its plan and its source. Pure; any thread.
namespace proof {

/// What is known about a run that the tool ended with status 0.
struct Evidence {
    ConversionPlan plan;
    media::Reading source;  ///< Container::Unknown: there is no reader for the source.
    media::Reading output;
    /// The lines of the subtitle file; empty: there is none, or its lines cannot be read.
    std::optional<std::vector<media::Line>> subtitleFile;
    std::vector<media::AviPictures> aviPictures;  ///< Of an AVI source; else empty.
    bool sourceIsCut = false;                     ///< It ends inside a unit of its container.
    bool sourceIsProgramStream = false;           ///< MPG, VOB: its pictures all last equally long.
    std::optional<qint32> runtimeSeconds;         ///< As reported by the probe, rounded down.
    QString toolOutput;                           ///< What the tool printed.
    QString sourcePath;                           ///< As the tool got it.
};

/// Signs that other arguments for the tool may avoid a loss.
struct Signs {
    bool embeddedLinesMissing = false;  ///< Subtitle lines of the movie are not in the output.
    bool linesDisplaced = false;        ///< Subtitle lines start at another time.

    bool any() const { return embeddedLinesMissing || linesDisplaced; }
};

struct Result {
    /// "Whole" only if everything could be compared and nothing is missing.
    Receipt receipt;
    Signs signs;
};

Result compare(const Evidence& evidence);

}  // namespace proof
