#pragma once

#include <QString>

#include <optional>

namespace readposition {

/// The offset in bytes up to which a process has read a file that it has open; empty if it has not opened the
/// file or has ended. Any thread.
std::optional<quint64> ofProcess(qint64 processId, const QString& path);

}  // namespace readposition
