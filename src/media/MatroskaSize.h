#pragma once

#include <QString>

#include <optional>

namespace matroska {

/// The minimum size in bytes of the complete Matroska file: the end of its segment as declared in the
/// segment's header, or, if that header was not written yet, one byte more than the current size. Null for
/// other files, and if the writer left the segment's size open. Reads a few bytes; does not block on FIFOs or
/// devices. Callable from any thread.
std::optional<quint64> declaredSize(const QString& path);

}  // namespace matroska
