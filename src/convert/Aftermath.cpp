#include "convert/Aftermath.h"

#include "probe/MKVFileInfo.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/ApplicationInfo.h"
#include "support/Defaults.h"
#include "support/Desktop.h"
#include "support/Log.h"
#include "support/Text.h"

#include <QFile>

namespace aftermath {

void notifyUser(const MKVFileInfo& info, bool hasFailed) {
    const QString name = ApplicationInfo::name();
    Notification notification;
    if (hasFailed) {
        notification.title = makeString("%@ Conversion Failed", name);
        notification.text = makeString("%@ has failed to convert the file %@.", name, info.fileName);
    } else {
        notification.title = makeString("%@ Conversion Finished", name);
        notification.text = makeString("%@ has finished converting the file %@.", name, info.fileName);
        notification.action = text::localized("Show");
        notification.path = info.destinationURL.toLocalFile();
    }
    sharedDesktop().notify(notification);
}

void countRun() {
    for (const QString& key : {QString(kConvertedFileCountKey), QString(kUsagesKey)}) {
        // The stored count: an override of this run is never stored.
        setDefaultInt(key, integerFromVariant(standardUserDefaults().storedObject(key)) + 1);
    }
}

void disposeOfSource(const MKVFileInfo& info) {
    const QString source = info.fileURL.toLocalFile();
    const bool deletes = settings::AutoRemoveType.value() == SourceRemoval::Delete;
    const bool gone = deletes ? QFile::remove(source) : sharedDesktop().moveToTrash(source);
    if (!gone) logError("Error: could not remove the source file %@", source);
}

}  // namespace aftermath
