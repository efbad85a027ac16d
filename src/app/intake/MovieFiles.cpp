#include "app/intake/MovieFiles.h"

#include "support/base/Files.h"
#include "support/processes/ProcessRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>

namespace moviefiles {

namespace {

const QStringList& textSubtitleTypes() {
    static const QStringList types = {"srt", "ass", "ssa", "smi"};
    return types;
}

constexpr QLatin1StringView kSubType("sub");

QString extensionOf(const QString& path) {
    return files::pathExtension(path).toLower();
}

/// Pictures are stored in an MPEG program stream, which begins with a pack header.
bool isProgramStream(const QString& path) {
    constexpr quint32 kPackHeader = 0xBA010000;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const auto word = readInt(file);
    return word && qFromLittleEndian(*word) == kPackHeader;
}

void addFilesBelow(const QString& folder, QStringList& found, const std::atomic<bool>* isStopped) {
    if (isStopped && *isStopped) return;
    QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Unsorted);
    std::sort(entries.begin(), entries.end(),
              [](const QFileInfo& a, const QFileInfo& b) { return a.fileName() < b.fileName(); });
    for (const QFileInfo& entry : std::as_const(entries)) {
        if (entry.isDir()) {
            if (!entry.isSymLink()) addFilesBelow(entry.filePath(), found, isStopped);
        } else if (isMovie(entry.filePath()) || isSubtitle(entry.filePath())) {
            found.append(entry.filePath());
        }
    }
}

}  // namespace

const QStringList& movieFileTypes() {
    static const QStringList types = {"mkv", "mp4", "mov", "ogm", "wmv", "mpg", "flv", "webm", "ts", "avi"};
    return types;
}

QStringList acceptedFileTypes() {
    return movieFileTypes() + textSubtitleTypes() + QStringList(kSubType);
}

bool isMovie(const QString& path) {
    return movieFileTypes().contains(extensionOf(path));
}

bool isSubtitle(const QString& path) {
    const QString extension = extensionOf(path);
    if (textSubtitleTypes().contains(extension)) return true;
    return extension == kSubType && QFileInfo(path).isFile() && !isProgramStream(path);
}

bool isPictureSubtitle(const QString& path) {
    return extensionOf(path) == kSubType && QFileInfo(path).isFile() && isProgramStream(path);
}

Sorted sorted(const QStringList& paths) {
    Sorted result;
    QStringList subs;
    for (const QString& path : paths) {
        if (isMovie(path)) {
            result.movies.append(path);
        } else if (isSubtitle(path)) {
            if (extensionOf(path) == kSubType)
                subs.append(path);
            else
                result.subtitles.insert(files::withoutExtension(path), path);
        }
    }
    for (const QString& path : std::as_const(subs))
        result.subtitles.insert(files::withoutExtension(path), path);
    return result;
}

QString subtitleFor(const QString& movie, const SubtitleFiles& subtitles) {
    // The stems are sorted, so those that begin with the movie's stem are adjacent.
    const QString stem = files::withoutExtension(movie);
    const auto found = subtitles.lowerBound(stem);
    return found != subtitles.cend() && found.key().startsWith(stem) ? found.value() : QString();
}

QStringList filesBelow(const QString& folder, const std::atomic<bool>* isStopped) {
    QStringList found;
    addFilesBelow(folder, found, isStopped);
    return found;
}

QStringList withFoldersSearched(const QStringList& paths, const std::atomic<bool>* isStopped) {
    QStringList result;
    for (const QString& path : paths) {
        if (QFileInfo(path).isDir()) {
            result += filesBelow(path, isStopped);
        } else {
            result.append(path);
        }
    }
    return result;
}

}  // namespace moviefiles
