#include "cli/Inputs.h"

#include "app/destinations/OutputName.h"
#include "app/intake/MovieFiles.h"
#include "convert/ClaimedFile.h"
#include "convert/ExistingOutput.h"
#include "support/base/Files.h"
#include "support/base/Texts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <unistd.h>

QString absolutePath(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

QString whyNotReadable(const QString& path) {
    const QFileInfo file(path);
    if (file.isSymLink() && files::fileIsAlias(QUrl::fromLocalFile(path))) return {};
    if (!file.exists() && path.contains(QChar::ReplacementCharacter))
        return Texts::tr("The name '%1' is not UTF-8. Please rename the file.").arg(path);
    if (!file.exists()) return Texts::tr("There is no file '%1'.").arg(path);
    if (file.isDir()) return Texts::tr("'%1' is a folder.").arg(path);
    if (!file.isFile()) return Texts::tr("'%1' is not a regular file.").arg(path);
    if (::access(QFile::encodeName(path).constData(), R_OK) != 0)
        return Texts::tr("You are not allowed to read the file '%1'.").arg(path);
    return {};
}

QString noSuchAudioTrack(const QString& file, qsizetype count, qsizetype position) {
    return Texts::tr("The movie '%1' has %n audio track(s), none with the position %2.", nullptr,
                     static_cast<int>(count))
        .arg(file, QString::number(position));
}

QString Inputs::noMovie() {
    return Texts::tr("there is no movie among the files");
}

namespace {

QStringList withoutOutputs(const QStringList& found) {
    static const QRegularExpression kNumber("-\\d+$");
    QSet<QString> stems;
    QSet<QString> stemsOfOthers;  // Of movies that can be no outputs.
    for (const QString& path : found) {
        if (!moviefiles::isMovie(path)) continue;
        stems.insert(files::withoutExtension(path));
        if (!outputname::hasOutputExtension(path)) stemsOfOthers.insert(files::withoutExtension(path));
    }
    const auto isOutput = [&](const QString& path) {
        if (!outputname::hasOutputExtension(path)) return false;
        QString stem = files::withoutExtension(path);
        if (stemsOfOthers.contains(stem) || existingoutput::isOutput(path)) return true;
        // "Part-2.mp4" beside "Part.mp4" may be a movie, but without attributes an output is more likely.
        const qsizetype length = stem.size();
        return claimedfile::markOf(path) == claimedfile::Mark::NotKnown &&
               stem.remove(kNumber).size() < length && stems.contains(stem);
    };
    QStringList left = found;
    left.removeIf(isOutput);
    return left;
}

}  // namespace

Inputs findInputs(const QStringList& paths, Outputs outputs) {
    Inputs inputs;
    const auto sort = [&](const QString& path) {
        if (moviefiles::isMovie(path)) {
            const QString reason = whyNotReadable(path);
            if (reason.isEmpty()) {
                inputs.movies.append(path);
            } else {
                inputs.refusals.push_back({path, reason});
            }
        } else if (moviefiles::isSubtitle(path) && whyNotReadable(path).isEmpty()) {
            inputs.subtitles.append(path);
        } else if (!moviefiles::isPictureSubtitle(path)) {
            QString reason = whyNotReadable(path);
            if (reason.isEmpty()) {
                reason = moviefiles::refusedType(path).isEmpty()
                             ? Texts::tr("'%1' is neither a movie nor a text subtitle file.").arg(path)
                             : moviefiles::whyLeftOut({path});
            }
            inputs.refusals.push_back({path, reason});
        }
    };
    for (const QString& given : paths) {
        const QString path = absolutePath(given);
        if (!QFileInfo(path).isDir()) {
            sort(path);
            continue;
        }
        QStringList leftOut;
        const QStringList found = moviefiles::filesBelow(path, nullptr, &leftOut);
        const QStringList taken = outputs == Outputs::LeftOut ? withoutOutputs(found) : found;
        for (const QString& file : taken)
            sort(file);
        if (found.isEmpty()) {
            inputs.refusals.push_back(
                {path, leftOut.isEmpty() ? Texts::tr("There are no movies in the folder '%1'.").arg(path)
                                         : moviefiles::whyLeftOut(leftOut)});
        }
    }
    return inputs;
}
