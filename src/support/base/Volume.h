#pragma once

#include <QString>

#include <optional>

/// What the volume that holds a folder can take.
namespace volume {

/// Bytes that the user may still write; nothing when the folder is not there.
std::optional<quint64> freeBytes(const QString& folder);

/// The largest file in bytes; nothing when the volume has no limit worth telling.
std::optional<quint64> maximumFileSize(const QString& folder);

/// The same from the file system's magic number, as statfs(2) tells it.
std::optional<quint64> maximumFileSizeOfType(long magic);

}  // namespace volume
