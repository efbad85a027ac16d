#pragma once

#include <QByteArrayList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <optional>

struct ifaddrs;

/// Information about the machine and the user, for problem reports, support mails and start-up checks. On
/// failure, every method returns a neutral value ("", false, null, the loopback address, -1). Features of
/// other operating systems are looked up in their places and not found. Main thread only: getgrnam(3) and
/// similar functions are not thread-safe.
class PXHostInformation {
public:
    /// The model of the machine.
    static QString machineType();
    /// Whether the user is listed as a member of one of the administrators' groups "admin", "sudo" and
    /// "wheel". A primary group does not count.
    static bool isUserAdmin();
    static bool isRunningUnderRosetta2();
    static bool isRunningTranslocated();
    /// Whether the application is on a read-only file system.
    static bool isRunningReadonly();
    /// The local host name, ending in ".local"; empty, which is logged, if the machine has none.
    static QString ipName();
    /// The numeric address of the first interface that is up and not the loopback, else the loopback's. Ends
    /// the process if the interfaces cannot be listed.
    static QString ipAddress(bool ipv6);
    /// Whether a default route exists. Sends nothing.
    static bool isOnline();
    /// The other users who are logged in at the machine itself, one name per session. Runs two programs.
    static QStringList otherLoggedInUsers();
    /// Paths of the running programs that the user may see.
    static QStringList runningProcesses();
    /// The two-letter country of the software store; null: unknown.
    static std::optional<QString> appStoreCountryCode();
    static std::optional<QUrl> growlInstallURL();
    /// The number of the boot disk, for devices named "/dev/disk3s1"; otherwise -1. A number is cached for
    /// the life of the process.
    static int bootDiskBSDNum();

    /// Adds a dictionary with "DiskNumber" and "DiskName"; the details follow the name in parentheses.
    static void addDiskToList(QList<QVariantMap>& disks, int number, const QString& name,
                              const QStringList& details);
};

/// Name and kernel of the operating system.
QString operatingSystemVersionString();

/// The rules behind PXHostInformation, as functions of the texts and lists that it reads. Callable from any
/// thread.
namespace hostrules {

/// The text of the first file that is not empty, cut to 255 bytes.
QString firstModel(const QStringList& files);
bool isAdministrator(const QByteArray& user,
                     const std::function<QByteArrayList(const char* group)>& membersOf);
bool isTranslocated(const QString& applicationPath);
/// `readSetting` fills in an integer and returns an error number, ENOENT if there is no such setting.
bool isTranslated(const std::function<int(int& value)>& readSetting);
bool isOnReadOnlyVolume(const QString& path);
QString localName(const QString& hostName);
/// `list` may be null.
QString firstAddress(const ifaddrs* list, bool ipv6);
/// `table` as in /proc/net/route.
bool hasDefaultRoute(const QString& table);
/// First words of the lines of who(1) that belong to the machine's own screen and keyboard and do not contain
/// `me`.
QStringList otherUsers(const QString& whoOutput, const QString& me);
int diskNumber(const QString& device);
/// The address of the last update in a journal of automatic updates, a property list in XML.
std::optional<QString> lastUpdateAddress(const QByteArray& journal);
std::optional<QString> storeCountryCode(const QString& address);

}  // namespace hostrules
