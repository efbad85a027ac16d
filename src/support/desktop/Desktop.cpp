#include "support/desktop/Desktop.h"

#include "support/desktop/NullDesktop.h"

#include <QFile>

namespace {

Desktop* theDesktop = nullptr;

}  // namespace

bool Desktop::moveToTrash(const QString& path) {
    return QFile::moveToTrash(path);
}

void setSharedDesktop(Desktop* desktop) {
    theDesktop = desktop;
}

Desktop& sharedDesktop() {
    static NullDesktop nothing;
    return theDesktop ? *theDesktop : nothing;
}
