#include "support/reports/HostInformation.h"

#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Text.h"
#include "support/processes/ProcessRunner.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QSysInfo>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <cerrno>
#include <grp.h>
#include <pwd.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

/// Advances to the value of `key` in the current dictionary. Returns false at the dictionary's end.
bool enterValue(QXmlStreamReader& xml, QStringView key) {
    bool isNext = false;
    while (xml.readNextStartElement()) {
        if (isNext) return true;
        if (xml.name() == u"key") {
            isNext = xml.readElementText() == key;
        } else {
            xml.skipCurrentElement();
        }
    }
    return false;
}

/// Only the machine's own consoles and displays; users of serial lines and pseudo-terminals may be remote.
bool isOfTheMachine(QStringView whoLine) {
    if (whoLine.contains(u"console")) return true;
    const QList<QStringView> words = whoLine.split(u' ', Qt::SkipEmptyParts);
    if (words.size() < 2) return false;
    const QStringView terminal = words[1];
    return terminal.startsWith(u':') ||
           (terminal.startsWith(u"tty") && terminal.size() > 3 && terminal[3].isDigit());
}

}  // namespace

namespace hostrules {

QString firstModel(const QStringList& files) {
    constexpr qint64 kLongest = 255;  // bytes
    for (const QString& path : files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) continue;
        // Firmware texts end with a zero byte.
        QString model = QString::fromUtf8(file.read(kLongest).constData()).trimmed();
        if (!model.isEmpty()) return model;
    }
    return {};
}

bool isAdministrator(const QByteArray& user,
                     const std::function<QByteArrayList(const char* group)>& membersOf) {
    constexpr std::array kGroups{"admin", "sudo", "wheel"};
    return std::any_of(kGroups.begin(), kGroups.end(),
                       [&](const char* group) { return membersOf(group).contains(user); });
}

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

bool isOnReadOnlyVolume(const QString& path) {
    struct statvfs information = {};
    return ::statvfs(QFile::encodeName(path).constData(), &information) == 0 &&
           (information.f_flag & ST_RDONLY) != 0;
}

QStringList otherUsers(const QString& whoOutput, const QString& me) {
    QStringList users;
    for (const QStringView line : text::lines(whoOutput)) {
        if (isOfTheMachine(line) && !line.contains(me)) users.append(text::piece(line, u" ", 0)->toString());
    }
    return users;
}

int diskNumber(const QString& device) {
    const QString prefix = "/dev/disk";
    // The folder of that name contains links with names that are no numbers.
    if (!device.startsWith(prefix) || device.startsWith(prefix + u'/')) return -1;
    return text::integerValue(
        text::piece(QStringView(device).mid(prefix.size()), u"s", 0).value_or(QStringView()));
}

std::optional<QString> lastUpdateAddress(const QByteArray& journal) {
    QXmlStreamReader xml(journal);
    const bool isDictionary =
        xml.readNextStartElement() && xml.readNextStartElement() && xml.name() == u"dict";
    if (!isDictionary || !enterValue(xml, u"autoInstalledUpdates")) return std::nullopt;
    std::optional<QString> address;
    while (xml.readNextStartElement()) {
        address.reset();
        while (enterValue(xml, u"url"))
            address = xml.readElementText();
    }
    return address;
}

std::optional<QString> storeCountryCode(const QString& address) {
    const auto rest = text::piece(address, u"store.ravelin.example/", 1);
    if (!rest) return std::nullopt;
    return text::piece(*rest, u"/", 0)->toString();
}

}  // namespace hostrules

QString PXHostInformation::machineType() {
    return hostrules::firstModel({"/sys/class/dmi/id/product_name", "/proc/device-tree/model"});
}

bool PXHostInformation::isUserAdmin() {
    const passwd* user = ::getpwuid(::getuid());
    if (!user) return false;
    return hostrules::isAdministrator(user->pw_name, [](const char* name) {
        QByteArrayList members;
        const group* found = ::getgrnam(name);
        for (char** member = found ? found->gr_mem : nullptr; member && *member; ++member)
            members.append(*member);
        return members;
    });
}

bool PXHostInformation::isRunningUnderRosetta2() {
    return hostrules::isTranslated([](int&) { return ENOENT; });
}

bool PXHostInformation::isRunningTranslocated() {
    return hostrules::isTranslocated(QCoreApplication::applicationDirPath());
}

bool PXHostInformation::isRunningReadonly() {
    return hostrules::isOnReadOnlyVolume(QCoreApplication::applicationDirPath());
}

QStringList PXHostInformation::otherLoggedInUsers() {
    const auto me = runAsTask({"/usr/bin/whoami"});
    const auto who = runAsTask({"/usr/bin/who"});
    if (!me || !who) return {};
    return hostrules::otherUsers(*who, text::trimmedOfWhitespaceAndNewlines(*me).toString());
}

QStringList PXHostInformation::runningProcesses() {
    // The kernel's suffix for a running program whose file was deleted or replaced.
    const QString deleted = " (deleted)";
    QStringList paths;
    const QStringList entries = QDir("/proc").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        if (text::integerValue(entry) == 0) continue;
        QString program = QFileInfo("/proc/" + entry + "/exe").symLinkTarget();
        if (program.endsWith(deleted)) program.chop(deleted.size());
        if (!program.isEmpty()) paths.append(program);
    }
    return paths;
}

std::optional<QString> PXHostInformation::appStoreCountryCode() {
    const auto journal =
        files::contents(QDir::homePath() + "/Library/Application Support/App Store/updatejournal.plist");
    const auto address = journal ? hostrules::lastUpdateAddress(*journal) : std::nullopt;
    return address ? hostrules::storeCountryCode(*address) : std::nullopt;
}

std::optional<QUrl> PXHostInformation::growlInstallURL() {
    const QString pane = "/Library/PreferencePanes/Growl.prefPane/Contents/Resources/GrowlHelperApp.app";
    for (const QString& place : {QString("/Applications/Growl.app"), QDir::homePath() + pane, pane}) {
        if (files::fileExists(place)) return QUrl::fromLocalFile(place);
    }
    return std::nullopt;
}

int PXHostInformation::bootDiskBSDNum() {
    constexpr int kNotAsked = -100;
    static int remembered = kNotAsked;
    if (remembered != kNotAsked) return remembered;
    const int number = hostrules::diskNumber(QString::fromUtf8(QStorageInfo::root().device()));
    if (number != -1) remembered = number;
    return number;
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
