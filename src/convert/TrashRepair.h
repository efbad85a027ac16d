#pragma once

#include "support/base/FileStamp.h"

#include <QString>

/// Moves to the trash that a killed process has not finished. Up to Qt 6.6 moving creates an empty
/// ".trashinfo" file, moves the file, and writes its origin into the first. From Qt 6.7 on the file first
/// gets a random name in the trash, by a hard link where there are any; then its origin is written, and it
/// gets its own name.
namespace trashrepair {

/// Completes the move of `source` if the file has left its place under its own name, otherwise it is where it
/// was, and the trash has nothing of it. `stamp`: of the source before the move. Returns false if that
/// failed.
bool settle(const QString& source, const std::optional<FileStamp>& stamp);

}  // namespace trashrepair
