#pragma once

#include "convert/proof/Receipt.h"

#include <QString>

#include <optional>
#include <stop_token>

namespace proof {

/// An output of which it is not known how it was made.
struct Existing {
    QString source;
    QString subtitleFile;  ///< Empty: there is none.
    QString output;
    ConversionPlan plan;  ///< What would be made of the source.
    std::optional<qint32> runtimeSeconds;
};

/// Compares the output with its source as after a conversion, and beyond that all frames of the picture and
/// of copied sound byte by byte, since nothing is known of the tool that wrote them. Returns the receipt if
/// it is whole, else nothing; also for a source whose frames cannot be counted, and when stopped. Reads both
/// files; for another movie's output mostly only the tables of the latter. Blocks; any thread.
std::optional<Receipt> ofExisting(const Existing& existing, const std::stop_token& stop);

/// Whether the file is no whole movie that was closed, as an output that is being written. Any thread.
bool isUnfinished(const QString& output);

}  // namespace proof
