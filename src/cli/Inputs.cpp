#include "cli/Inputs.h"

#include "app/intake/MovieFiles.h"
#include "support/base/Files.h"
#include "support/base/Texts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

Inputs findInputs(const QStringList& paths) {
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
        for (const QString& file : found)
            sort(file);
        if (found.isEmpty()) {
            inputs.refusals.push_back(
                {path, leftOut.isEmpty() ? Texts::tr("There are no movies in the folder '%1'.").arg(path)
                                         : moviefiles::whyLeftOut(leftOut)});
        }
    }
    return inputs;
}
