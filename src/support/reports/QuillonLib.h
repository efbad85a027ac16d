#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

/// The support library's singleton, created once, early in the launch, on the main thread. Returns the
/// application's name, version and folders; nothing is cached. Names, version and settings path are callable
/// from any thread, everything else on the main thread only.
class QuillonLib {
public:
    /// Creates the application-support folder and checks that the application was unpacked correctly (if
    /// either fails, the process ends with status 1), reports a problem with the settings file, schedules
    /// saving of the settings a few seconds after a change and soon after a logged error, and installs the
    /// handler of uncaught exceptions. Needs the QCoreApplication and the alert presenter.
    QuillonLib();
    ~QuillonLib();
    QuillonLib(const QuillonLib&) = delete;
    QuillonLib& operator=(const QuillonLib&) = delete;

    /// The instance; created at the first call if the application did not.
    static QuillonLib& shared();

    QString appName() const;
    QString appVersionString() const;
    int appBuildNumber() const;
    QString appBundleIdentifier() const;

    QString prefsPath() const;
    QUrl prefsURL() const;
    QString resDir() const;
    QUrl resURL() const;
    /// The application's private Documents folder; created if it is missing.
    QString docDir() const;
    QUrl docURL() const;
    QString deskDir() const;
    QUrl deskURL() const;
    QString suppDir() const;
    QUrl suppURL() const;
    QUrl homeURLInsideSandbox() const;
    QUrl homeURLOutsideSandbox() const;

    /// SHA-256 of the program file, hexadecimal; empty if it cannot be read.
    QString appChecksumSHA() const;
    /// The first ten characters of the checksums of the program and of each program in the private Frameworks
    /// folder, separated by blanks.
    QString appChecksumIncludingFrameworksSHA() const;

    /// Paths of the application's crash reports, the user's before the system's.
    QStringList appCrashLogFilenames() const;
    /// Their texts, each cut at the first system library; empty if one cannot be read.
    QStringList appCrashLogs() const;

    QString supportAddress() const;
    /// The application's name in reports and requests.
    QString supportRequestAppName() const;
    /// Opens a mail to support that begins with `text` and describes the machine. If the Option key is held,
    /// the settings are included. Main thread only.
    void sendSupportRequestMail(const QString& text) const;
    /// The commands of the vendor's menu: 1 a support request, 2 a request for beta versions, 3 the vendor's
    /// page, 4 the store's page, 5 the same in the store's program, else a comparison page, 6 a directory
    /// page. Does nothing if there is no such page. Main thread only.
    void openURL(int choice) const;

private:
    void prepareSupportFolder() const;
    void verifyFrameworks() const;
    void saveSettingsAfterChanges() const;
};
