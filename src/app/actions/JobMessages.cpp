#include "app/actions/JobMessages.h"

#include "convert/ConversionJob.h"
#include "convert/proof/ReceiptText.h"
#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/alerts/DontWarnAgain.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"

#include <QFileInfo>

namespace jobmessages {

namespace {

void showUrgent(const ConversionJob& job, const RunEnding& ending) {
    switch (ending.kind) {
        case RunEnding::Kind::SourceGone: {
            const QString message =
                Texts::tr(
                    "It seems you've removed the file %1 or unmounted its volume so conversion can't proceed.")
                    .arg(job.fileInfo().fileURL.fileName());
            showInTurn([message] {
                alert_dontwarnagain_ever("warningremoved", Texts::tr("Error"), message, Texts::tr("OK"),
                                         Texts::tr("Don't warn again"));
            });
            return;
        }
        case RunEnding::Kind::VolumeTooSmall: {
            const QString message = spacecheck::message(ending.space);
            showInTurn([message] { alert_apptitled(message, Texts::tr("OK")); }, message);
            return;
        }
        case RunEnding::Kind::NoSpace:
            showInTurn([told = job.explanation()] { alert(told.title, told.message, Texts::tr("OK")); },
                       "no space left");
            return;
        default:
            return;
    }
}

/// A damaged or failed movie stays on the screen until the user has seen it; of the others the last is
/// enough.
constexpr auto kConvertedGroup = "converted";
constexpr auto kWindowGroup = "window";

void notifyUser(const MKVFileInfo& info, const RunEnding& ending) {
    const bool hasFailed = !ending.succeeded();
    const QString name = ApplicationInfo::name();
    Notification notification;
    if (hasFailed) {
        notification.title = Texts::tr("%1 Conversion Failed").arg(name);
        notification.text = Texts::tr("%1 has failed to convert the file %2.").arg(name, info.fileName);
        notification.showsWindow = true;
    } else {
        notification.title = Texts::tr("%1 Conversion Finished").arg(name);
        notification.text = Texts::tr("%1 has finished converting the file %2.").arg(name, info.fileName);
        if (ending.receipt) notification.text += u'\n' + receipttext::summary(*ending.receipt);
        notification.action = Texts::tr("Show");
        notification.path = info.destinationURL.toLocalFile();
        if (!ending.isKnownDamaged()) notification.group = kConvertedGroup;
    }
    sharedDesktop().notify(notification);
}

}  // namespace

void showEnding(const ConversionJob& job) {
    const RunEnding ending = job.ending().value_or(RunEnding());
    showUrgent(job, ending);
    if (ending.wasAttempted()) notifyUser(job.fileInfo(), ending);
}

void notifyOfEnd(const QueueOutcome::Sum& sum) {
    QStringList parts;
    if (sum.converted > 0) parts.append(Texts::tr("%n converted", nullptr, sum.converted));
    if (sum.damaged > 0) parts.append(Texts::tr("%n damaged", nullptr, sum.damaged));
    if (sum.failed > 0) parts.append(Texts::tr("%n failed", nullptr, sum.failed));
    Notification notification;
    notification.title = Texts::tr("%1 Queue Finished").arg(ApplicationInfo::name());
    notification.text = parts.join(", ");
    notification.group = kConvertedGroup;
    notification.showsWindow = true;
    sharedDesktop().notify(notification);
}

void withdrawClosedWindow() {
    sharedDesktop().withdraw(kWindowGroup);
}

void notifyOfClosedWindow(bool isConverting) {
    const QString name = ApplicationInfo::name();
    Notification notification;
    notification.title =
        (isConverting ? Texts::tr("%1 goes on converting") : Texts::tr("%1 stays open")).arg(name);
    notification.text = isConverting ? Texts::tr("Its window is closed.")
                                     : Texts::tr("Its window is closed, and movies are waiting.");
    notification.action = Texts::tr("Show");
    notification.quitAction = Texts::tr("Quit");
    notification.group = kWindowGroup;
    notification.showsWindow = true;
    sharedDesktop().notify(notification);
}

void notifyOfArrival(const QString& path) {
    Notification notification;
    notification.title = Texts::tr("%1 Watch Folder").arg(ApplicationInfo::name());
    notification.text = Texts::tr("The movie “%1” has arrived.").arg(QFileInfo(path).fileName());
    notification.group = "arrived";
    notification.showsWindow = true;
    sharedDesktop().notify(notification);
}

}  // namespace jobmessages
