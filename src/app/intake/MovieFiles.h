#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <atomic>

/// Which files are movies and subtitles, and which subtitle belongs to which movie.
namespace moviefiles {

/// The extensions of movies, in lower case.
const QStringList& movieFileTypes();
/// All extensions that the application takes: those of movies, then those of subtitles.
QStringList acceptedFileTypes();

bool isMovie(const QString& path);
/// By the extension; a ".sub" file is read, since the same extension stands for pictures from DVDs.
bool isSubtitle(const QString& path);
/// A ".sub" file of pictures: it comes along with movies and is passed over.
bool isPictureSubtitle(const QString& path);

/// A subtitle file's path without its extension -> the file.
using SubtitleFiles = QMap<QString, QString>;

struct Sorted {
    QStringList movies;  ///< In the order given.
    SubtitleFiles subtitles;
};

/// Other files are passed over. Of two subtitle files with one stem the later one counts, but a ".sub" file
/// counts before all others.
Sorted sorted(const QStringList& paths);

/// The subtitle for a movie: the first, by name, whose stem begins with the movie's path without extension,
/// so that "Movie.en.srt" belongs to "Movie.mkv". Empty: none. A subtitle may serve several movies, so it
/// stays listed.
QString subtitleFor(const QString& movie, const SubtitleFiles& subtitles);

/// The movies and subtitle files in `folder` and below it, in name order. Folders that cannot be read are
/// passed over; linked folders are not followed. `isStopped` becoming true ends the search; may be null.
QStringList filesBelow(const QString& folder, const std::atomic<bool>* isStopped = nullptr);

/// Each folder of `paths` replaced by the files below it.
QStringList withFoldersSearched(const QStringList& paths, const std::atomic<bool>* isStopped = nullptr);

}  // namespace moviefiles
