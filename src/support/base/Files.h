#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

/// Operations on paths. Paths are UTF-8 on disk. Callable from any thread; throws nothing.
namespace files {

bool fileExists(const QString& path);
/// False for a URL that is not a file URL.
bool fileExists(const QUrl& url);
/// The file's bytes; null if it cannot be read.
std::optional<QByteArray> contents(const QString& path);
/// Size in bytes; 0 if it is not known, and for a folder.
quint64 fileSize(const QUrl& url);

/// The text after the last dot of the last path component, without the dot. A name that only begins with a
/// dot has no extension.
QString pathExtension(const QString& path);
QString withoutExtension(const QString& path);

/// `path` if `taken` returns false for it, else the first free one of "stem-0.extension", "stem-1.extension"
/// ... The stem is cut to fit the file systems' limit of 255 bytes.
QString uniqueFile(const QString& path, const std::function<bool(const QString&)>& taken);
/// The same; a path is taken if it exists.
QString uniqueFile(const QString& path);

/// Like uniqueFile(), but creates the empty file, so that no other process can take the name. Returns only
/// the name if the file cannot be created.
QString claimUniqueFile(const QString& path, const std::function<bool(const QString&)>& taken = {});

/// `stem` + `ending`; the stem is cut (never inside a character) to fit the 255 bytes of a file name.
QString fittingFileName(const QString& stem, const QString& ending);

/// Whether `path` is `folder` or below it, by whole components: "/media/ab" is not below "/media/a". Both are
/// absolute, without a trailing slash.
bool isAtOrBelow(const QString& path, const QString& folder);
/// The new path of a file after `folder` was moved to `newFolder`; a path outside `folder` is unchanged.
QString withFolderMoved(const QString& path, const QString& folder, const QString& newFolder);

/// Whether a new file can be created at `path`. Returns false for an existing file, so that finished outputs
/// are never overwritten. Null: the file system shows it only with a file of that name.
std::optional<bool> isWriteablePath(const QString& path);

/// Creates an empty file, or a folder, in the temporary folder, readable by the user only. Returns its path,
/// or an empty one on failure. The caller deletes it.
QString makeTempFilepath(const QString& extension = {});
QString makeTempDirectory();

/// Whether it is a broken symbolic link, or an alias file as found on shared volumes. A symbolic link to a
/// readable file is no alias.
bool fileIsAlias(const QUrl& url);

}  // namespace files
