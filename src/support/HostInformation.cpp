#include "support/HostInformation.h"

#include "support/Files.h"
#include "support/Log.h"
#include "support/ProcessRunner.h"
#include "support/Text.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QSysInfo>

#include <cerrno>
#include <grp.h>
#include <pwd.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace hostrules {

bool isTranslocated(const QString& applicationPath) {
    return applicationPath.contains("AppTranslocation");
}

bool isTranslated(const std::function<int(int& value)>& readSetting) {
    int value = 0;
    const int error = readSetting(value);
    if (error == 0) return value > 0;
    if (error != ENOENT) logError("Error:    sysctl.proctranslated returned %i", error);
    return false;
}

QStringList otherUsers(const QString& whoOutput, const QString& me) {
    QStringList users;
    for (const QStringView line : text::lines(whoOutput)) {
        if (line.contains(u"console") && !line.contains(me))
            users.append(text::piece(line, u" ", 0)->toString());
    }
    return users;
}

int diskNumber(const QString& device) {
    const QString prefix = "/dev/disk";
    if (!device.startsWith(prefix)) return -1;
    return text::integerValue(
        text::piece(QStringView(device).mid(prefix.size()), u"s", 0).value_or(QStringView()));
}

std::optional<QString> storeCountryCode(const QString& address) {
    const auto rest = text::piece(address, u"store.ravelin.example/", 1);
    if (!rest) return std::nullopt;
    return text::piece(*rest, u"/", 0)->toString();
}

}  // namespace hostrules

QString PXHostInformation::machineType() {
    for (const char* place : {"/sys/class/dmi/id/product_name", "/proc/device-tree/model"}) {
        const auto bytes = files::contents(place);
        if (bytes && !bytes->isEmpty()) return QString::fromUtf8(*bytes).remove(QChar(u'\0')).trimmed();
    }
    return {};
}

bool PXHostInformation::isUserAdmin() {
    const passwd* user = ::getpwuid(::getuid());
    if (!user) return false;
    const QByteArray name = user->pw_name;
    const group* admins = ::getgrnam("admin");
    if (!admins) return false;
    for (char** member = admins->gr_mem; *member; ++member) {
        if (name == *member) return true;
    }
    return false;
}

bool PXHostInformation::isRunningUnderRosetta2() {
    return hostrules::isTranslated([](int&) { return ENOENT; });
}

bool PXHostInformation::isRunningTranslocated() {
    return hostrules::isTranslocated(QCoreApplication::applicationDirPath());
}

bool PXHostInformation::isRunningReadonly() {
    struct statvfs information = {};
    const QByteArray path = QFile::encodeName(QCoreApplication::applicationDirPath());
    return ::statvfs(path.constData(), &information) == 0 && (information.f_flag & ST_RDONLY) != 0;
}

QStringList PXHostInformation::otherLoggedInUsers() {
    const auto me = runAsTask({"/usr/bin/whoami"});
    const auto who = runAsTask({"/usr/bin/who"});
    if (!me || !who) return {};
    return hostrules::otherUsers(*who, text::trimmedOfWhitespaceAndNewlines(*me).toString());
}

QStringList PXHostInformation::runningProcesses() {
    QStringList paths;
    const QStringList entries = QDir("/proc").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        if (text::integerValue(entry) == 0) continue;
        const QString program = QFileInfo("/proc/" + entry + "/exe").symLinkTarget();
        if (!program.isEmpty()) paths.append(program);
    }
    return paths;
}

std::optional<QString> PXHostInformation::appStoreCountryCode() {
    const auto journal =
        files::contents(QDir::homePath() + "/Library/Application Support/App Store/updatejournal.plist");
    return journal ? hostrules::storeCountryCode(QString::fromUtf8(*journal)) : std::nullopt;
}

std::optional<QUrl> PXHostInformation::growlInstallURL() {
    const QString pane = "/Library/PreferencePanes/Growl.prefPane/Contents/Resources/GrowlHelperApp.app";
    for (const QString& place : {QString("/Applications/Growl.app"), QDir::homePath() + pane, pane}) {
        if (files::fileExists(place)) return QUrl::fromLocalFile(place);
    }
    return std::nullopt;
}

int PXHostInformation::bootDiskBSDNum() {
    return hostrules::diskNumber(QString::fromUtf8(QStorageInfo::root().device()));
}

void PXHostInformation::addDiskToList(QList<QVariantMap>& disks, int number, const QString& name,
                                      const QStringList& details) {
    const QString described = details.isEmpty() ? name : makeString("%@ (%@)", name, details.join(", "));
    disks.append({{"DiskNumber", number}, {"DiskName", described}});
}

QString operatingSystemVersionString() {
    return makeString("%@ (%@ %@)", QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                      QSysInfo::kernelVersion());
}
