#include "app/actions/Reveal.h"

#include "app/actions/SupportMail.h"
#include "convert/ConversionJob.h"
#include "support/alerts/Alert.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"

void reveal(const ConversionJob& job, bool shiftIsHeld) {
    const MKVFileInfo& info = job.fileInfo();
    if (job.state() != JobState::Failed) {
        sharedDesktop().reveal((shiftIsHeld ? info.fileURL : info.destinationURL).toLocalFile());
        return;
    }
    const failure::Explanation told = job.explanation();
    if (!told.offersSupport) {
        alert(told.title, told.message, Texts::tr("OK"));
        return;
    }
    // The job may be removed while the alert is open.
    const auto compose = [arguments = job.arguments(), output = job.jobOutput(), info] {
        return conversionSupportMail(arguments, output, info);
    };
    if (alert(told.title, told.message, Texts::tr("Send to support"), Texts::tr("Cancel")) ==
        kAlertFirstButton)
        mail::open(compose());
}
