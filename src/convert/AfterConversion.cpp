#include "convert/AfterConversion.h"

#include "convert/RunJournal.h"
#include "probe/MKVFileInfo.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/base/Log.h"
#include "support/desktop/Desktop.h"
#include "support/store/Defaults.h"

#include <QFile>

namespace afterconversion {

void countRun() {
    for (const QString& key : {QString(kConvertedFileCountKey), QString(kUsagesKey)}) {
        // Use the stored count: an override of this run is never stored.
        setDefaultInt(key, integerFromVariant(standardUserDefaults().storedObject(key)) + 1);
    }
}

void disposeOfSource(const MKVFileInfo& info) {
    const QString source = info.fileURL.toLocalFile();
    const bool deletes = settings::AutoRemoveType.value() == SourceRemoval::Delete;
    const auto toTrash = [&] { return sharedDesktop().moveToTrash(source); };
    const bool gone = deletes ? QFile::remove(source) : RunJournal::moveToTrash(source, toTrash);
    if (!gone) logError("Error: could not remove the source file %@", source);
}

}  // namespace afterconversion
