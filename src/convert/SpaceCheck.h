#pragma once

#include <QString>

#include <optional>

/// Whether a volume can store the output of a movie. Pure; any thread. Sizes are in bytes.
namespace spacecheck {

enum class Verdict { Enough, TooLittleSpace, NoLargeFiles };

/// An unknown size or limit does not prevent the conversion.
Verdict check(quint64 movieSize, std::optional<quint64> freeBytes, std::optional<quint64> maximumFileSize);

/// The message for a verdict; empty for Enough.
QString message(Verdict verdict);

}  // namespace spacecheck
