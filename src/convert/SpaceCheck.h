#pragma once

#include <QString>

#include <optional>

/// Whether a volume can take the output of a movie.
namespace spacecheck {

enum class Verdict { Enough, TooLittleSpace, NoLargeFiles };

/// An unknown amount or limit holds nothing up.
Verdict check(quint64 movieSize, std::optional<quint64> freeBytes, std::optional<quint64> maximumFileSize);

/// The message for a verdict; empty for Enough.
QString message(Verdict verdict);

}  // namespace spacecheck
