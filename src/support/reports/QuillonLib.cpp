#include "support/reports/QuillonLib.h"

#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/alerts/SaveSettings.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Texts.h"
#include "support/processes/Dispatch.h"
#include "support/reports/AppIdentity.h"
#include "support/reports/BundleIntegrity.h"
#include "support/reports/CrashLogs.h"
#include "support/reports/Exceptions.h"
#include "support/reports/SupportRequest.h"
#include "support/store/Defaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <atomic>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace {

QuillonLib* qn = nullptr;

constexpr float kSaveDelaySeconds = 5;
constexpr float kUrgentSaveDelaySeconds = 0.2F;  // Combines many successive messages into few writes.

QUrl url(const QString& path) {
    return QUrl::fromLocalFile(path);
}

/// The application is unusable.
[[noreturn]] void endWithFailure() {
    standardUserDefaults().synchronise();  // Saves the log messages with the reason, too.
    std::exit(1);
}

/// Does nothing after the library was destroyed, which saved everything.
void scheduleSave(float seconds, std::atomic<bool>& isScheduled) {
    if (isScheduled.exchange(true)) return;
    dispatch_after_main(
        [&isScheduled] {
            isScheduled = false;
            if (qn) saveSettings();
        },
        seconds);
}

}  // namespace

QuillonLib::QuillonLib() {
    qn = this;
    reportSettingsProblemOnce();
    if (!appName().isEmpty()) prepareSupportFolder();
    installExceptionHandler();
    verifyFrameworks();
    saveSettingsAfterChanges();
}

QuillonLib::~QuillonLib() {
    standardUserDefaults().setChangeHandler({});
    saveSettings();
    if (qn == this) qn = nullptr;
}

QuillonLib& QuillonLib::shared() {
    if (!qn) {
        static QuillonLib instance;
        qn = &instance;  // Also needed after an earlier instance was destroyed.
    }
    return *qn;
}

void QuillonLib::prepareSupportFolder() const {
    const QString path = suppDir();
    const QFileInfo information(path);
    if (information.isDir()) return;
    if (information.exists() || information.isSymLink()) {
        alert_apptitled(
            Texts::tr(
                "This application can not be launched because its 'Application Support' folder is not a folder but a file. Please remove the file '%1' and re-launch this app.")
                .arg(path),
            Texts::tr("OK"));
        return;
    }
    if (QDir().mkpath(path)) return;
    alert_apptitled(
        Texts::tr(
            "This application can not be launched because the 'Application Support' can not be created at the path '%1'.\nError: %2")
            .arg(path, qt_error_string(errno)),
        Texts::tr("OK"));
    endWithFailure();
}

void QuillonLib::verifyFrameworks() const {
    const auto path = damagedFramework(appidentity::frameworksFolder());
    if (!path) return;
    alert_apptitled(
        Texts::tr(
            "This application is damaged. Either your download was damaged or you used a faulty program to extract the ZIP archive. Please re-download and make sure to use the ZIP decompression built into Mac OS X.\n\nOffending Path: %1")
            .arg(*path),
        Texts::tr("OK"));
    endWithFailure();
}

void QuillonLib::saveSettingsAfterChanges() const {
    static std::atomic<bool> isScheduled = false;
    static std::atomic<bool> isUrgentlyScheduled = false;
    standardUserDefaults().setChangeHandler([](SettingsStore::Urgency urgency) {
        if (urgency == SettingsStore::Urgency::Soon) {
            scheduleSave(kUrgentSaveDelaySeconds, isUrgentlyScheduled);
        } else {
            scheduleSave(kSaveDelaySeconds, isScheduled);
        }
    });
    // The store does not report earlier changes.
    if (standardUserDefaults().hasChanges()) scheduleSave(kSaveDelaySeconds, isScheduled);
}

QString QuillonLib::appName() const {
    return ApplicationInfo::name();
}
QString QuillonLib::appVersionString() const {
    return ApplicationInfo::version();
}
int QuillonLib::appBuildNumber() const {
    return ApplicationInfo::buildNumber();
}
QString QuillonLib::appBundleIdentifier() const {
    return ApplicationInfo::bundleIdentifier();
}

QString QuillonLib::prefsPath() const {
    return standardUserDefaults().filePath();
}
QUrl QuillonLib::prefsURL() const {
    return url(prefsPath());
}
QString QuillonLib::resDir() const {
    return ApplicationInfo::resourceFolder();
}
QUrl QuillonLib::resURL() const {
    return url(resDir());
}

QString QuillonLib::docDir() const {
    return ApplicationInfo::documentsFolder();
}
QUrl QuillonLib::docURL() const {
    return url(docDir());
}

QString QuillonLib::deskDir() const {
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}
QUrl QuillonLib::deskURL() const {
    return url(deskDir());
}

QString QuillonLib::suppDir() const {
    const QString program = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    return ApplicationInfo::homeInsideSandbox() + u'/' + (appName().isEmpty() ? program : appName());
}
QUrl QuillonLib::suppURL() const {
    return url(suppDir());
}

QUrl QuillonLib::homeURLInsideSandbox() const {
    return url(ApplicationInfo::homeInsideSandbox());
}

QUrl QuillonLib::homeURLOutsideSandbox() const {
    const passwd* entry = ::getpwuid(::getuid());
    return url(entry ? QFile::decodeName(entry->pw_dir) : QDir::homePath());
}

QString QuillonLib::appChecksumSHA() const {
    return appidentity::checksum();
}
QString QuillonLib::appChecksumIncludingFrameworksSHA() const {
    return appidentity::checksumIncludingFrameworks();
}

QString QuillonLib::supportAddress() const {
    return appidentity::supportAddress();
}

QString QuillonLib::supportRequestAppName() const {
    return appidentity::supportRequestAppName();
}

QStringList QuillonLib::appCrashLogFilenames() const {
    return crashlogs::paths({crashlogs::ownFolder(), crashlogs::systemFolder()}, appName());
}

QStringList QuillonLib::appCrashLogs() const {
    return crashlogs::contents(appCrashLogFilenames());
}

void QuillonLib::sendSupportRequestMail(const QString& text) const {
    supportrequest::send(text);
}

void QuillonLib::openURL(int choice) const {
    supportrequest::openPage(choice);
}
