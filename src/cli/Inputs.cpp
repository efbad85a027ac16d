#include "cli/Inputs.h"

#include "app/intake/MovieFiles.h"
#include "support/base/Files.h"
#include "support/base/Format.h"

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
        return makeString("The name '%@' is not UTF-8. Please rename the file.", path);
    if (!file.exists()) return makeString("There is no file '%@'.", path);
    if (file.isDir()) return makeString("'%@' is a folder.", path);
    if (!file.isFile()) return makeString("'%@' is not a regular file.", path);
    if (::access(QFile::encodeName(path).constData(), R_OK) != 0)
        return makeString("You are not allowed to read the file '%@'.", path);
    return {};
}

Inputs findInputs(const QStringList& paths) {
    Inputs inputs;
    const auto take = [&](const QString& path) {
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
            const QString reason = whyNotReadable(path);
            inputs.refusals.push_back(
                {path, reason.isEmpty()
                           ? makeString("'%@' is neither a movie nor a text subtitle file.", path)
                           : reason});
        }
    };
    for (const QString& given : paths) {
        const QString path = absolutePath(given);
        if (!QFileInfo(path).isDir()) {
            take(path);
            continue;
        }
        const QStringList found = moviefiles::filesBelow(path);
        for (const QString& file : found)
            take(file);
        if (found.isEmpty()) {
            inputs.refusals.push_back({path, makeString("There are no movies in the folder '%@'.", path)});
        }
    }
    return inputs;
}
