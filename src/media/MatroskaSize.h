#pragma once

#include <QString>

#include <optional>

namespace matroska {

/// The size in bytes that a Matroska file has at least when it is whole: where its segment ends, as the
/// segment's own header declares it, or, while that header is not there yet, one byte more than there is.
/// Nothing for any other file, and where the writer left the segment's size open. Reads a few bytes; a file
/// that is no regular file does not block.
std::optional<quint64> declaredSize(const QString& path);

}  // namespace matroska
