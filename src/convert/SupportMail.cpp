#include "convert/SupportMail.h"

#include "probe/MKVFileInfo.h"
#include "support/Format.h"
#include "support/HostInformation.h"
#include "support/QuillonLib.h"
#include "support/Text.h"

QString conversionSupportMail(const QStringList& arguments, const QString& output, const MKVFileInfo& info) {
    const QuillonLib& library = QuillonLib::shared();
    const QString subject =
        makeString("%@ v%@ Problem Report", library.appName(), library.appVersionString());
    const QString body = makeString(
        "Hello\nConversion of a file failed.\n\nBye\n\nP.S. Details: %@ %@ %@\n\n\nP.P.S: Hardware: %@ "
        "Software: %@ "
        "Preferences: %@",
        arguments.join(u' '), output, info.description(), PXHostInformation::machineType(),
        operatingSystemVersionString(), library.preferencesBase64());
    return text::escaped(makeString("mailto:%@?subject=%@&body=%@", library.supportAddress(), subject, body));
}
