#include "support/ApplicationInfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

static void initialiseResources() {
    Q_INIT_RESOURCE(info);
}

namespace ApplicationInfo {

namespace {

const QJsonObject& information() {
    static const QJsonObject object = [] {
        initialiseResources();
        QFile file(":/Info.json");
        if (!file.open(QIODevice::ReadOnly)) return QJsonObject();
        return QJsonDocument::fromJson(file.readAll()).object();
    }();
    return object;
}

}  // namespace

QString value(const char* key) {
    return information().value(QLatin1String(key)).toString();
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

QString resourceFolder() {
    const QString named = qEnvironmentVariable("RAVELIN_RESOURCES");
    if (!named.isEmpty()) return QDir(named).absolutePath();
    // <build>/bin beside <build>/resources, or <prefix>/bin beside <prefix>/share/ravelin.
    const QDir program(QCoreApplication::applicationDirPath());
    const QString built = QDir::cleanPath(program.filePath("../resources"));
    return QFileInfo(built).isDir() ? built : QDir::cleanPath(program.filePath("../share/ravelin"));
}

}  // namespace ApplicationInfo
