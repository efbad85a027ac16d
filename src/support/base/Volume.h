#pragma once

#include <QString>

#include <optional>

/// Limits of the volume that contains a folder. Callable from any thread; may block on network volumes.
namespace volume {

/// Bytes that are available to the user; null if the folder does not exist.
std::optional<quint64> freeBytes(const QString& folder);

/// The largest file size in bytes; null if the volume has no relevant limit.
std::optional<quint64> maximumFileSize(const QString& folder);

/// The same by the file system's magic number from statfs(2).
std::optional<quint64> maximumFileSizeOfType(long magic);

/// Whether other machines may write to the volume: it is a server's, or one of FUSE, of which that is not
/// known. False if the folder does not exist.
bool isShared(const QString& folder);

/// Whether the file system's magic number is that of one whose files are on a server, as far as is known.
bool isNetworkType(long magic);

/// Where the volume of a folder is mounted; of the nearest existing one above a folder that does not exist.
QString mountPoint(const QString& folder);

/// Whether the absolute path lies in the documents portal, where a Flatpak finds the files and folders that
/// the user opened. The kernel reports nothing there of what is done to them from outside.
bool isInDocumentsPortal(const QString& path);

}  // namespace volume
