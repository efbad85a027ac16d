#include "support/reports/SupportRequest.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/desktop/Desktop.h"
#include "support/reports/AppIdentity.h"
#include "support/reports/HostInformation.h"
#include "support/reports/Mail.h"
#include "support/reports/Vendor.h"

#include <QtGlobal>

namespace {

#ifdef Q_PROCESSOR_ARM
constexpr bool kIsBuiltForArm = true;
#else
constexpr bool kIsBuiltForArm = false;
#endif

constexpr int kSupportRequest = 1;

QString vendorPage(const QString& appName) {
    // The page of "Ravelin-Pro Max" is named "ravelin".
    const QString word = appName.toLower().section(u' ', 0, 0).section(u'-', 0, 0);
    return makeString("%@%@/", QString(vendor::kSiteRoot), word);
}

/// The address that opens the page in the store's own program.
QString inStore(QString page) {
    return page.replace("https", "macappstore") + "&at=" + vendor::kAffiliateToken;
}

}  // namespace

namespace supportrequest {

QString architecture(bool isBuiltForArm, bool isTranslated) {
    if (isBuiltForArm) return "ARM (Native)";
    return isTranslated ? "ARM (Rosetta)" : "Intel";
}

QString body(const QString& text, const Machine& machine, const QString& attachment) {
    return makeString("%@\n\n\n\nP.S: Hardware: %@ [%@] Software: %@ Admin: %i UDID: %@\n%@\n%@", text,
                      machine.type, machine.architecture, machine.system, machine.isAdmin ? 1 : 0,
                      makeString("%@ %@", machine.checksums, QString("N/A")), attachment, QString());
}

QString address(int choice, const QString& appName, const QString& supportAddress,
                const std::function<QString(const char* key)>& information) {
    const auto otherwise = [](const QString& page, const QString& other) {
        return page.isEmpty() ? other : page;
    };
    const QString storePage = information("StoreProductPage");
    switch (choice) {
        case 2:
            // Format of the first version; mail programs do not parse it as an address.
            return makeString(
                "s%@?subject=%@ Beta Versions&body=Hello\nI would like to test upcoming beta versions of %@.\nBye\n",
                supportAddress, appName, appName);
        case 3:
            return otherwise(information("VendorProductPage"), vendorPage(appName));
        case 4:
            return storePage;
        case 5:
            return storePage.isEmpty() ? information("AlternativetoProductPage") : inStore(storePage);
        case 6:
            return otherwise(information("MacupdateProductPage"), information("FilehorseProductPage"));
        default:
            return {};
    }
}

void send(const QString& text) {
    const bool sendsSettings = sharedDesktop().isOptionKeyHeld();
    const Machine machine{PXHostInformation::machineType(),
                          architecture(kIsBuiltForArm, PXHostInformation::isRunningUnderRosetta2()),
                          operatingSystemVersionString(), PXHostInformation::isUserAdmin(),
                          appidentity::checksumIncludingFrameworks()};
    const QString subject = makeString("%@ v%@ (%i) Support Request", appidentity::supportRequestAppName(),
                                       ApplicationInfo::version(), ApplicationInfo::buildNumber());
    const auto composed = [&](const QString& settings) {
        return body(text, machine,
                    sendsSettings ? makeString("Preferences (BASE64): %@", settings) : QString());
    };
    mail::open(sendsSettings ? mail::withSettings(appidentity::supportAddress(), subject, composed)
                             : mail::Message{appidentity::supportAddress(), subject, composed({}), {}});
}

void openPage(int choice) {
    if (choice == kSupportRequest) {
        send("<Insert Support Request Here>");
        return;
    }
    const QString chosen =
        address(choice, ApplicationInfo::name(), appidentity::supportAddress(), ApplicationInfo::value);
    // Escapes invalid characters, but nothing that is already escaped.
    const QUrl url(chosen, QUrl::TolerantMode);
    if (!url.isEmpty() && url.isValid()) sharedDesktop().openUrl(url);
}

}  // namespace supportrequest
