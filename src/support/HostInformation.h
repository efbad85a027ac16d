#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <optional>

/// Questions about the machine and the user, for problem reports, support mails and start-up checks. Every
/// method answers with a neutral value on failure ("", no, none, the loop-back address, -1). What only other
/// systems know is looked for where it would be and is not there. Callable from any thread.
class PXHostInformation {
public:
    /// The model of the machine.
    static QString machineType();
    /// Whether the user is listed as a member of the group "admin". Membership as the primary group does not
    /// count.
    static bool isUserAdmin();
    static bool isRunningUnderRosetta2();
    static bool isRunningTranslocated();
    /// Whether the application lies on a file system that is mounted read-only.
    static bool isRunningReadonly();
    /// The local host name, ending in ".local".
    static QString ipName();
    /// The numeric address of the first interface that is up and is not the loop-back, else the loop-back's.
    static QString ipAddress(bool ipv6);
    /// Whether a default route is there. Nothing is sent.
    static bool isOnline();
    static QStringList otherLoggedInUsers();
    /// Paths of the programs that run, as far as the user may see them.
    static QStringList runningProcesses();
    /// The two-letter country of the software store; nothing: not known.
    static std::optional<QString> appStoreCountryCode();
    static std::optional<QUrl> growlInstallURL();
    /// The number of the disk that the system started from, for devices named "/dev/disk3s1"; otherwise -1.
    static int bootDiskBSDNum();

    /// Adds a dictionary with "DiskNumber" and "DiskName", the details behind the name in parentheses.
    static void addDiskToList(QList<QVariantMap>& disks, int number, const QString& name,
                              const QStringList& details);
};

/// Name and kernel of the operating system.
QString operatingSystemVersionString();

/// The rules behind the answers, on the texts from which they are read.
namespace hostrules {

bool isTranslocated(const QString& applicationPath);
/// `readSetting` fills in an integer and returns an error number, ENOENT where there is no such setting.
bool isTranslated(const std::function<int(int& value)>& readSetting);
/// First words of the lines of who(1) that are on the console and not `me`'s.
QStringList otherUsers(const QString& whoOutput, const QString& me);
int diskNumber(const QString& device);
std::optional<QString> storeCountryCode(const QString& address);

}  // namespace hostrules
