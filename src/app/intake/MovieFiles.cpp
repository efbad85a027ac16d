#include "app/intake/MovieFiles.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Texts.h"
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

/// Extensions that people know as those of movies.
const QStringList& refusedTypes() {
    static const QStringList types = {"m2ts", "mts",  "m2t", "m4v",  "mpeg", "mpe", "m1v", "m2v",
                                      "vob",  "evo",  "asf", "divx", "rm",   "3gp", "3g2", "f4v",
                                      "rmvb", "mk3d", "ogv", "qt",   "dv",   "mxf", "wtv", "tp",
                                      "trp",  "tod",  "264", "265",  "h264", "hevc"};
    return types;
}

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

void addFilesBelow(const QString& folder, QStringList& found, QStringList* leftOut,
                   const std::atomic<bool>* isStopped) {
    if (isStopped && *isStopped) return;
    QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Unsorted);
    std::sort(entries.begin(), entries.end(),
              [](const QFileInfo& a, const QFileInfo& b) { return a.fileName() < b.fileName(); });
    for (const QFileInfo& entry : std::as_const(entries)) {
        if (entry.isDir()) {
            if (!entry.isSymLink()) addFilesBelow(entry.filePath(), found, leftOut, isStopped);
        } else if (isMovie(entry.filePath()) || isSubtitle(entry.filePath())) {
            found.append(entry.filePath());
        } else if (leftOut && !refusedType(entry.filePath()).isEmpty()) {
            leftOut->append(entry.filePath());
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

QString refusedType(const QString& path) {
    const QString extension = extensionOf(path);
    return refusedTypes().contains(extension) ? extension : QString();
}

QString whyLeftOut(const QStringList& names) {
    QStringList types;
    for (const QString& name : names)
        types.append(u'.' + refusedType(name));
    types.sort();
    types.removeDuplicates();
    const QString application = ApplicationInfo::name();
    if (names.size() == 1)
        return Texts::tr("“%1” is left out: %2 does not convert movies of the type %3.")
            .arg(names.first(), application, types.first());
    if (types.size() == 1)
        return Texts::tr("Movies of the type %1 are left out: %2 does not convert them.")
            .arg(types.first(), application);
    return Texts::tr("Movies of the types %1 are left out: %2 does not convert them.")
        .arg(types.join(", "), application);
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

QStringList filesBelow(const QString& folder, const std::atomic<bool>* isStopped, QStringList* leftOut) {
    QStringList found;
    addFilesBelow(folder, found, leftOut, isStopped);
    return found;
}

QStringList withFoldersSearched(const QStringList& paths, const std::atomic<bool>* isStopped,
                                QStringList* leftOut) {
    QStringList result;
    for (const QString& path : paths) {
        if (QFileInfo(path).isDir()) {
            result += filesBelow(path, isStopped, leftOut);
        } else {
            result.append(path);
        }
    }
    return result;
}

}  // namespace moviefiles
