#include "support/reports/BundleIntegrity.h"

#include "support/base/Files.h"
#include "support/base/Format.h"

#include <QDir>
#include <QFileInfo>

std::optional<QString> damagedFramework(const QString& folder) {
    const QStringList entries = QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& entry : entries) {
        QString path = makeString("%@/%@/%@", folder, entry, files::withoutExtension(entry));
        if (!QFileInfo(path).isSymLink() && !files::fileIsAlias(QUrl::fromLocalFile(path))) return path;
    }
    return std::nullopt;
}
