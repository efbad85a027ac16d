#pragma once

#include <QByteArrayList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <optional>

struct ifaddrs;

/// Questions about the machine and the user, for problem reports, support mails and start-up checks. Every
/// method answers with a neutral value on failure ("", no, none, the loop-back address, -1). What only other
/// systems know is looked for where it would be and is not there. Main thread only: the user database is not
/// for several at once.
class PXHostInformation {
public:
    /// The model of the machine.
    static QString machineType();
    /// Whether the user is listed as a member of one of the groups that may administer a machine: "admin",
    /// "sudo" and "wheel". Membership as the primary group does not count.
    static bool isUserAdmin();
    static bool isRunningUnderRosetta2();
    static bool isRunningTranslocated();
    /// Whether the application lies on a file system that is mounted read-only.
    static bool isRunningReadonly();
    /// The local host name, ending in ".local"; empty, and a line in the log, when the machine has none.
    static QString ipName();
    /// The numeric address of the first interface that is up and is not the loop-back, else the loop-back's.
    /// Ends the process when the system cannot list its interfaces.
    static QString ipAddress(bool ipv6);
    /// Whether a default route is there. Nothing is sent.
    static bool isOnline();
    /// The others who are logged in at the machine itself, one name a session. Runs two programs.
    static QStringList otherLoggedInUsers();
    /// Paths of the programs that run, as far as the user may see them.
    static QStringList runningProcesses();
    /// The two-letter country of the software store; nothing: not known.
    static std::optional<QString> appStoreCountryCode();
    static std::optional<QUrl> growlInstallURL();
    /// The number of the disk that the system started from, for devices named "/dev/disk3s1"; otherwise -1. A
    /// number that was found once stays for the life of the process.
    static int bootDiskBSDNum();

    /// Adds a dictionary with "DiskNumber" and "DiskName", the details behind the name in parentheses.
    static void addDiskToList(QList<QVariantMap>& disks, int number, const QString& name,
                              const QStringList& details);
};

/// Name and kernel of the operating system.
QString operatingSystemVersionString();

/// The rules behind the answers, on the texts and lists from which they are read.
namespace hostrules {

/// The text of the first of the files that has one; what is longer than 255 bytes is cut.
QString firstModel(const QStringList& files);
bool isAdministrator(const QByteArray& user,
                     const std::function<QByteArrayList(const char* group)>& membersOf);
bool isTranslocated(const QString& applicationPath);
/// `readSetting` fills in an integer and returns an error number, ENOENT where there is no such setting.
bool isTranslated(const std::function<int(int& value)>& readSetting);
bool isOnReadOnlyVolume(const QString& path);
QString localName(const QString& hostName);
/// `list` may be null.
QString firstAddress(const ifaddrs* list, bool ipv6);
/// `table` as in /proc/net/route.
bool hasDefaultRoute(const QString& table);
/// First words of the lines of who(1) that are of the machine's own screen and keyboard and do not contain
/// `me`.
QStringList otherUsers(const QString& whoOutput, const QString& me);
int diskNumber(const QString& device);
/// The address of the last update in a journal of automatic updates, a property list in XML.
std::optional<QString> lastUpdateAddress(const QByteArray& journal);
std::optional<QString> storeCountryCode(const QString& address);

}  // namespace hostrules
