#include "app/diagnosis/Diagnosis.h"

#include "settings/Settings.h"
#include "settings/SettingsTable.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/FileLock.h"
#include "support/base/Texts.h"
#include "support/base/Volume.h"
#include "support/desktop/Buses.h"
#include "support/reports/HostInformation.h"
#include "support/store/Defaults.h"
#include "tool/Tool.h"
#include "tool/cage/Cage.h"
#include "watch/events/Inotify.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>

namespace diagnosis {

namespace {

QString withoutHome(QString text) {
    const QString home = QDir::homePath();
    return home.size() > 1 ? text.replace(home, "~") : text;
}

Finding program() {
    return {"program", State::Fine,
            QString("%1 %2 (%3), Qt %4, %5, %6")
                .arg(ApplicationInfo::name(), ApplicationInfo::version())
                .arg(ApplicationInfo::buildNumber())
                .arg(qVersion(), operatingSystemVersionString(), QSysInfo::currentCpuArchitecture())};
}

Finding carriedTool() {
    if (const QString problem = tool::problem(); !problem.isEmpty())
        return {"tool", State::Broken, withoutHome(problem)};
    const QString version = tool::version();
    const QString path = withoutHome(tool::path());
    if (version.isEmpty())
        return {"tool", State::Broken, Texts::tr("The conversion tool at '%1' does not run.").arg(path)};
    return {"tool", State::Fine, Texts::tr("%1, at %2").arg("ffmpeg " + version, path)};
}

Finding cageParts() {
    const CageMode mode = settings::CageTool.value();
    if (const QString refusal = cage::refusal(mode); !refusal.isEmpty())
        return {"cage", State::Broken, refusal};
    if (mode == CageMode::Off) return {"cage", State::Limited, Texts::tr("switched off")};
    return {"cage", cage::available().isWhole() ? State::Fine : State::Limited, cage::description()};
}

/// Two locks on one file: the second must not be granted.
bool excludesOthers(const QString& path) {
    FileLock first(path);
    FileLock second(path);
    return first.lock(0) && !second.lock(0);
}

/// The folder itself, or the nearest one above it in which it would be created.
QString existing(QString path) {
    while (!QFileInfo::exists(path) && path != "/")
        path = QFileInfo(path).path();
    return path;
}

/// `name` is how the folder is called in the text.
Finding folder(const QString& path, const QString& name, State ifUnwritable) {
    const auto free = volume::freeBytes(path);
    QString text = free ? Texts::tr("%1: %2 free").arg(name, QLocale().formattedDataSize(qint64(*free)))
                        : Texts::tr("%1: not there").arg(name);
    if (!free) return {"folder", ifUnwritable, text};
    const QTemporaryDir scratch(path + "/.ravelin-doctor-XXXXXX");
    if (!scratch.isValid()) {
        return {"folder", ifUnwritable,
                Texts::tr("%1, but it cannot be written to: %2").arg(text, std::strerror(errno))};
    }
    if (const auto largest = volume::maximumFileSize(path))
        text = Texts::tr("%1, files of at most %2").arg(text, QLocale().formattedDataSize(qint64(*largest)));
    if (excludesOthers(scratch.filePath("lock")))
        return {"folder", State::Fine, Texts::tr("%1, locks work").arg(text)};
    return {"folder", State::Limited,
            Texts::tr("%1, but locks do not work: let only one Ravelin at a time write there").arg(text)};
}

Finding inotifyLimits() {
    const Inotify instance;
    if (const QString problem = instance.problem(); !problem.isEmpty())
        return {"inotify", State::Limited, problem};
    return {"inotify", State::Fine,
            Texts::tr("at most %1 folders and %2 programs can be watched per user")
                .arg(Inotify::systemLimit("max_user_watches"), Inotify::systemLimit("max_user_instances"))};
}

/// Whether the service runs or would be started by a call.
bool isThere(const QDBusConnection& bus, const QString& service) {
    constexpr int kLimitMilliseconds = 2000;
    QDBusMessage names = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                        "org.freedesktop.DBus", "ListActivatableNames");
    const QDBusReply<bool> runs = bus.interface()->isServiceRegistered(service);
    if (runs.isValid() && runs.value()) return true;
    const QDBusReply<QStringList> startable = bus.call(names, QDBus::Block, kLimitMilliseconds);
    return startable.isValid() && startable.value().contains(service);
}

Finding bus(const char* topic, const std::optional<QDBusConnection>& connection,
            const QStringList& services) {
    if (!connection) return {topic, State::Limited, Texts::tr("not there")};
    QStringList missing;
    for (const QString& service : services) {
        if (!isThere(*connection, service)) missing.append(service);
    }
    if (missing.isEmpty()) return {topic, State::Fine, Texts::tr("there, with %1").arg(services.join(", "))};
    return {topic, State::Limited, Texts::tr("there, but without %1").arg(missing.join(", "))};
}

Finding fonts() {
    constexpr int kEnough = 1000;
    int count = 0;
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::FontsLocation);
    folders.removeDuplicates();
    for (const QString& path : folders) {
        QDirIterator files(path, {"*.ttf", "*.otf", "*.ttc", "*.pfb", "*.woff2"}, QDir::Files,
                           QDirIterator::Subdirectories);
        for (; files.hasNext() && count < kEnough; ++count)
            files.next();
    }
    if (count == 0) return {"fonts", State::Limited, Texts::tr("none; the window needs one")};
    return {"fonts", State::Fine, Texts::tr("%n file(s)", nullptr, count)};
}

/// Paths and names are the user's own: only their number is given.
QString shownValue(const settings::Row& setting, const QVariant& value) {
    if (value.typeId() == QMetaType::QVariantList)
        return Texts::tr("%n entry(s)", nullptr, static_cast<int>(value.toList().size()));
    if (setting.type == settings::Type::Data) return Texts::tr("set");
    return QString::number(integerFromVariant(value));
}

Finding changedSettings() {
    QStringList changed;
    for (const settings::Row* setting : settings::all()) {
        const QVariant value = standardUserDefaults().storedObject(setting->key);
        const bool isUnset =
            !value.isValid() || (value.typeId() == QMetaType::QVariantList && value.toList().isEmpty());
        if (isUnset || value == setting->defaultValue()) continue;
        changed.append(setting->key + "=" + shownValue(*setting, value));
    }
    if (const QString problem = standardUserDefaults().problem(); !problem.isEmpty())
        return {"settings", State::Broken, withoutHome(problem)};
    return {"settings", State::Fine, changed.isEmpty() ? Texts::tr("all as they came") : changed.join(", ")};
}

}  // namespace

QList<Finding> findings(const QStringList& folders) {
    QList<Finding> found = {
        program(),
        carriedTool(),
        cageParts(),
        folder(existing(QFileInfo(ApplicationInfo::settingsFilePath()).path()), Texts::tr("settings"),
               State::Broken),
        folder(existing(ApplicationInfo::homeInsideSandbox()), Texts::tr("own data"), State::Broken),
        folder(QDir::tempPath(), Texts::tr("temporary files"), State::Limited)};
    for (const QString& path : folders)
        found.append(folder(QFileInfo(path).absoluteFilePath(), withoutHome(path), State::Limited));
    return found + QList<Finding>{
                       inotifyLimits(),
                       bus("sessionBus", buses::session(),
                           {"org.freedesktop.Notifications", "org.freedesktop.FileManager1",
                            "org.freedesktop.portal.Desktop"}),
                       bus("systemBus", buses::system(), {"org.freedesktop.login1"}),
                       fonts(),
                       changedSettings(),
                   };
}

}  // namespace diagnosis
