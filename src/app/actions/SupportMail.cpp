#include "app/actions/SupportMail.h"

#include "probe/MKVFileInfo.h"
#include "support/base/Format.h"
#include "support/reports/HostInformation.h"
#include "support/reports/QuillonLib.h"

mail::Message conversionSupportMail(const QStringList& arguments, const QString& output,
                                    const MKVFileInfo& info) {
    const QuillonLib& library = QuillonLib::shared();
    const QString subject =
        makeString("%@ v%@ Problem Report", library.appName(), library.appVersionString());
    const auto body = [&](const QString& settings) {
        return makeString(
            "Hello\nConversion of a file failed.\n\nBye\n\nP.S. Details: %@ %@ %@\n\n\nP.P.S: Hardware: %@ Software: %@ Preferences: %@",
            arguments.join(u' '), output, info.description(), PXHostInformation::machineType(),
            operatingSystemVersionString(), settings);
    };
    return mail::withSettings(library.supportAddress(), subject, body);
}
