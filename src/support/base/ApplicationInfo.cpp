#include "support/base/ApplicationInfo.h"

#include "support/base/Files.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QStandardPaths>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ApplicationInfo {

namespace {

struct Entry {
    std::string_view key;
    const char* value;  ///< In UTF-8.
};
constexpr Entry kEntries[] = {
#include "Information.inc"
};

struct Move {
    QMutex guard;
    QString before;  ///< Empty if no folder was moved.
    QString now;
};

Move& folderMove() {
    static Move move;
    return move;
}

QString currentPathOf(const QString& path) {
    Move& move = folderMove();
    const QMutexLocker locker(&move.guard);
    return move.before.isEmpty() ? path : files::withFolderMoved(path, move.before, move.now);
}

}  // namespace

QString value(const char* key) {
    const auto* const found = std::ranges::find(kEntries, std::string_view(key), &Entry::key);
    return found == std::end(kEntries) ? QString() : QString::fromUtf8(found->value);
}

QString name() {
    return value("CFBundleName");
}
QString version() {
    return value("CFBundleShortVersionString");
}
int buildNumber() {
    return value("CFBundleVersion").toInt();
}
QString bundleIdentifier() {
    return value("CFBundleIdentifier");
}

QString settingsFilePath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u'/' +
           bundleIdentifier() + "/settings.json";
}

QString homeInsideSandbox() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u'/' + bundleIdentifier();
}

QString documentsFolder() {
    QString path = homeInsideSandbox() + "/Documents";
    QDir().mkpath(path);
    return path;
}

QString bundlePath() {
    const QDir program(QCoreApplication::applicationDirPath());
    return program.dirName() == "bin" ? QDir::cleanPath(program.filePath("..")) : program.path();
}

void followMove(const QString& before, const QString& now) {
    Move& move = folderMove();
    const QMutexLocker locker(&move.guard);
    move.before = before;
    move.now = now;
}

QString resourceFolder() {
    const QString named = qEnvironmentVariable("RAVELIN_RESOURCES");
    if (!named.isEmpty()) return currentPathOf(QDir(named).absolutePath());
    // <build>/bin beside <build>/resources, or <prefix>/bin beside <prefix>/share/ravelin.
    const QDir program(currentPathOf(QCoreApplication::applicationDirPath()));
    const QString built = QDir::cleanPath(program.filePath("../resources"));
    return QFileInfo(built).isDir() ? built : QDir::cleanPath(program.filePath("../share/ravelin"));
}

}  // namespace ApplicationInfo
