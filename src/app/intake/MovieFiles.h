#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <atomic>

/// Recognises movies and subtitle files, and assigns subtitles to movies. Any thread.
namespace moviefiles {

/// The extensions of movies, in lower case.
const QStringList& movieFileTypes();
/// All accepted extensions: those of movies, then those of subtitles.
QStringList acceptedFileTypes();

bool isMovie(const QString& path);
/// The extension, in lower case, of a movie of a type that is not accepted; empty for any other file.
QString refusedType(const QString& path);
/// Why movies of these names are left out, in one sentence for the user. They all have a refusedType().
QString whyLeftOut(const QStringList& names);
/// Decided by the extension; a ".sub" file is opened, since DVD subtitles in the form of pictures have the
/// same extension.
bool isSubtitle(const QString& path);
/// Whether this is a ".sub" file of pictures. Such files come with movies and are ignored.
bool isPictureSubtitle(const QString& path);

/// A subtitle file's path without its extension -> the file.
using SubtitleFiles = QMap<QString, QString>;

struct Sorted {
    QStringList movies;  ///< In the given order.
    SubtitleFiles subtitles;
};

/// Ignores other files. Of two subtitle files with the same stem the later one counts, but a ".sub" file has
/// priority over all others.
Sorted sorted(const QStringList& paths);

/// The subtitle for a movie: the first, by name, whose stem begins with the movie's path without extension,
/// so that "Movie.en.srt" belongs to "Movie.mkv". Empty: none. A subtitle may belong to several movies.
QString subtitleFor(const QString& movie, const SubtitleFiles& subtitles);

/// The movies and subtitle files in `folder` and below it, sorted by name. Unreadable folders are skipped;
/// symbolic links to folders are not followed. The search ends early when `*isStopped` becomes true;
/// `isStopped` and `leftOut` may be null. Movies with a refusedType() are appended to `leftOut`.
QStringList filesBelow(const QString& folder, const std::atomic<bool>* isStopped = nullptr,
                       QStringList* leftOut = nullptr);

/// `paths` with each folder replaced by the files below it. `leftOut` as above, for these files.
QStringList withFoldersSearched(const QStringList& paths, const std::atomic<bool>* isStopped = nullptr,
                                QStringList* leftOut = nullptr);

}  // namespace moviefiles
