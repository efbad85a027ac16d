#include "convert/AfterConversion.h"

#include "probe/MKVFileInfo.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"
#include "support/store/Defaults.h"

#include <QFile>

namespace afterconversion {

void notifyUser(const MKVFileInfo& info, bool hasFailed) {
    const QString name = ApplicationInfo::name();
    Notification notification;
    if (hasFailed) {
        notification.title = Texts::tr("%1 Conversion Failed").arg(name);
        notification.text = Texts::tr("%1 has failed to convert the file %2.").arg(name, info.fileName);
    } else {
        notification.title = Texts::tr("%1 Conversion Finished").arg(name);
        notification.text = Texts::tr("%1 has finished converting the file %2.").arg(name, info.fileName);
        notification.action = Texts::tr("Show");
        notification.path = info.destinationURL.toLocalFile();
    }
    sharedDesktop().notify(notification);
}

void countRun() {
    for (const QString& key : {QString(kConvertedFileCountKey), QString(kUsagesKey)}) {
        // Use the stored count: an override of this run is never stored.
        setDefaultInt(key, integerFromVariant(standardUserDefaults().storedObject(key)) + 1);
    }
}

void disposeOfSource(const MKVFileInfo& info) {
    const QString source = info.fileURL.toLocalFile();
    const bool deletes = settings::AutoRemoveType.value() == SourceRemoval::Delete;
    const bool gone = deletes ? QFile::remove(source) : sharedDesktop().moveToTrash(source);
    if (!gone) logError("Error: could not remove the source file %@", source);
}

}  // namespace afterconversion
