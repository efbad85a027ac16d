#include "support/reports/ProblemReport.h"

#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Log.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/processes/Dispatch.h"
#include "support/reports/AppIdentity.h"
#include "support/reports/HostInformation.h"
#include "support/store/Defaults.h"

#include <QCoreApplication>

#include <cstdlib>

namespace problemreport {

QString alertText(const QString& message, const QString& details) {
    constexpr qsizetype kShown = 400;
    const QString shown =
        details.size() > kShown
            ? Texts::tr("%1  …\n(Remaining message omitted)").arg(text::clamp(details, kShown))
            : details;
    return Texts::
        tr("%1\n\n You can contact our support with detailed information so that we can fix this problem.\n\nInformation: %2")
            .arg(message, shown);
}

mail::Message compose(const QString& message, const QString& details, bool isFatal) {
    const QString subject = makeString("%@ v%@ (%i) Problem Report", appidentity::supportRequestAppName(),
                                       ApplicationInfo::version(), ApplicationInfo::buildNumber());
    const auto body = [&](const QString& settings) {
        return makeString(
            "Hello\nA %@ error in %@ occurred (%@).\n\nBye\n\nP.S. Details: %@\n\n\nP.P.S: Hardware: %@ Software: %@ UDID: %@ Admin: %i\n\nPreferences: %@\n",
            QString(isFatal ? "fatal" : ""), ApplicationInfo::name(), message, details,
            PXHostInformation::machineType(), operatingSystemVersionString(),
            appidentity::checksumIncludingFrameworks(), PXHostInformation::isUserAdmin() ? 1 : 0, settings);
    };
    return mail::withSettings(appidentity::supportAddress(), subject, body);
}

}  // namespace problemreport

namespace {

void alert_feedback(const QString& message, const QString& details, bool isFatal) {
    logError("alert_feedback %@ %@", message, details);
    dispatch_sync_main([&] {
        standardUserDefaults().synchronise();
        const long response = alert(isFatal ? Texts::tr("Fatal Error") : Texts::tr("Error"),
                                    problemreport::alertText(message, details), Texts::tr("Send to support"),
                                    isFatal ? Texts::tr("Quit") : Texts::tr("Continue"));
        if (response == kAlertFirstButton) mail::open(problemreport::compose(message, details, isFatal));
        if (!isFatal) return;
        standardUserDefaults().synchronise();  // Saves the latest log messages, too.
        std::exit(1);
    });
}

}  // namespace

void alert_feedback_nonfatal(const QString& message, const QString& details) {
    alert_feedback(message, details, false);
}

void alert_feedback_fatal(const QString& message, const QString& details) {
    alert_feedback(message, details, true);
    std::exit(1);
}
