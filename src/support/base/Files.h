#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

/// Operations on paths. Paths are UTF-8 on disk; nothing here throws.
namespace files {

bool fileExists(const QString& path);
/// False for an address that is not a file's.
bool fileExists(const QUrl& url);
/// The file's bytes; nothing when it cannot be read.
std::optional<QByteArray> contents(const QString& path);
/// Size in bytes; 0 when it cannot be read, and for a folder.
quint64 fileSize(const QUrl& url);

/// The last path component's text after its last point, without the point. A name that only begins with a
/// point has no extension.
QString pathExtension(const QString& path);
QString withoutExtension(const QString& path);

/// `path` if `taken` says no to it, else the first of "stem-0.extension", "stem-1.extension" ... that is
/// free. A stem is cut where the name would not fit into the 255 bytes that file systems allow.
QString uniqueFile(const QString& path, const std::function<bool(const QString&)>& taken);
/// The same, taken meaning that something exists there.
QString uniqueFile(const QString& path);

/// uniqueFile() as an empty file that is there when this returns: nobody else can take the name meanwhile.
/// Where no file can be made, only the name.
QString claimUniqueFile(const QString& path, const std::function<bool(const QString&)>& taken = {});

/// `stem` + `ending`, the stem cut (never inside a character) to fit into the 255 bytes of a file name.
QString fittingFileName(const QString& stem, const QString& ending);

/// Whether `path` is `folder` or lies below it, by whole components: "/media/ab" does not lie below
/// "/media/a". Both absolute, without a slash at the end.
bool isAtOrBelow(const QString& path, const QString& folder);
/// Where a path is when `folder` is at `newFolder`: one at or below the folder goes along, any other stays.
QString withFolderMoved(const QString& path, const QString& folder, const QString& newFolder);

/// Whether a new file can be written at `path`. A path where something exists counts as not writeable, so
/// that a finished output is never taken for a free place. Leaves nothing behind.
bool isWriteablePath(const QString& path);

/// The path of a new, empty file, or of a new folder, among the temporary files, which only the user can
/// read. Empty where none can be made. Whoever asked deletes it.
QString makeTempFilepath(const QString& extension = {});
QString makeTempDirectory();

/// A link that cannot be opened, or an alias file of the kind that shared volumes hold. A symbolic link to a
/// readable file is no alias: it is followed as everywhere.
bool fileIsAlias(const QUrl& url);

}  // namespace files
