#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

/// The support library's singleton: made once, early in the launch. Knows the application's name, version and
/// folders; every answer is computed when it is asked for.
class QuillonLib {
public:
    /// Makes sure of the application-support folder and that the application was unpacked intact (without
    /// either the process ends with status 1), tells what is wrong with the settings file, has unsaved
    /// settings written a few seconds after a change and soon after an error was logged, and installs the
    /// handler of uncaught exceptions. Needs the QCoreApplication and the alert presenter.
    QuillonLib();
    ~QuillonLib();
    QuillonLib(const QuillonLib&) = delete;
    QuillonLib& operator=(const QuillonLib&) = delete;

    /// The instance; made at the first call where the application did not.
    static QuillonLib& shared();

    QString appName() const;
    QString appVersionString() const;
    int appBuildNumber() const;
    QString appBundleIdentifier() const;

    QString prefsPath() const;
    QUrl prefsURL() const;
    QString resDir() const;
    QUrl resURL() const;
    /// The application's private Documents folder, made when it is missing.
    QString docDir() const;
    QUrl docURL() const;
    QString deskDir() const;
    QUrl deskURL() const;
    QString suppDir() const;
    QUrl suppURL() const;
    QUrl homeURLInsideSandbox() const;
    QUrl homeURLOutsideSandbox() const;

    /// SHA-256 of the program file, hexadecimal; empty when it cannot be read.
    QString appChecksumSHA() const;
    /// Its first ten characters and those of each program in the private Frameworks folder, between blanks.
    QString appChecksumIncludingFrameworksSHA() const;

    /// Paths of the reports of the application's crashes, the user's before the system's.
    QStringList appCrashLogFilenames() const;
    /// What they say, each up to the first library of the system; empty where one cannot be read.
    QStringList appCrashLogs() const;

    QString supportAddress() const;
    /// The application's name in reports and requests.
    QString supportRequestAppName() const;
    /// Opens a mail to support that begins with `text` and tells of the machine. With the Option key held,
    /// the settings go with it. Main thread only.
    void sendSupportRequestMail(const QString& text) const;
    /// What the menu of the maker's pages offers: 1 a support request, 2 a request for beta versions, 3 the
    /// maker's page, 4 the store's, 5 the same in the store's program, else a page that compares, 6 a page
    /// that lists. Opens nothing where there is no such page. Main thread only.
    void openURL(int choice) const;

private:
    void prepareSupportFolder() const;
    void verifyFrameworks() const;
    void saveSettingsAfterChanges() const;
};
