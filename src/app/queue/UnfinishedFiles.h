#pragma once

#include <QStringList>

/// The files that a former instance had to leave to the next one, on disk until that has taken them: also
/// when the next one cannot be started and the user does so days later. Main thread only.
namespace unfinished {

/// Adds to what is kept: a former instance's may not have been taken yet. Failing is logged.
void keep(const QStringList& paths);
/// In the order in which they were kept.
QStringList kept();
void forget();

/// The paths after the application folder went from `before` to `now`, often with a volume or a folder above
/// it, which takes movies along: a file that is not where it was, but in the same place of what moved, is
/// meant there.
QStringList movedAlong(const QStringList& paths, QString before, QString now);

}  // namespace unfinished
