#pragma once

#include <QString>

/// Finds what the tool reports about damage in its source in a run that it nevertheless ends with status 0.
/// Pure; any thread.
namespace toolwords {

/// Whether the tool could not read the source, once or for good.
bool reportReadErrors(const QString& toolOutput);

/// Whether the tool found damaged data in the source, or gave it up. `source` is its path as the tool knows
/// it.
bool reportDamage(const QString& toolOutput, const QString& source);

/// Whether the tool could not decode all of a stream that it converted.
bool reportDecodingErrors(const QString& toolOutput, int stream);

}  // namespace toolwords
