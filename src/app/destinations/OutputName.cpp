#include "app/destinations/OutputName.h"

#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/base/Files.h"
#include "support/store/Defaults.h"

#include <QFile>

#include <sys/stat.h>

namespace outputname {

QString outputExtension() {
    return settings::DefaultExtension.word();
}

QString outputFileName(const QString& inputFileName) {
    return files::fittingFileName(files::withoutExtension(inputFileName), u'.' + outputExtension());
}

bool hasOutputExtension(const QString& path) {
    const QString extension = files::pathExtension(path).toLower();
    return settings::DefaultExtension.choices.find(extension);
}

bool isSameFile(const QString& a, const QString& b) {
    struct stat first = {};
    struct stat second = {};
    if (a == b) return true;
    return ::stat(QFile::encodeName(a).constData(), &first) == 0 &&
           ::stat(QFile::encodeName(b).constData(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

}  // namespace outputname
