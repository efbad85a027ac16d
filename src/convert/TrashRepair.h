#pragma once

#include <QString>

/// Moves to the trash that a killed process has not finished. Moving creates an empty ".trashinfo" file,
/// moves the file, and writes its origin into the first.
namespace trashrepair {

/// Completes the move of `source` if the file has left its place, otherwise deletes the empty information.
/// Returns false if that failed.
bool complete(const QString& source);

}  // namespace trashrepair
