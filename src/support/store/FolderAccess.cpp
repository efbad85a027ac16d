#include "support/store/FolderAccess.h"

#include "support/base/Texts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <unistd.h>

namespace folderaccess {

namespace {

QHash<QString, int>& counts() {
    static QHash<QString, int> counted;
    return counted;
}

QString whyNotUsable(const QString& folder) {
    const QFileInfo info(folder);
    if (!info.exists()) return Texts::tr("The folder '%1' does not exist.").arg(folder);
    if (!info.isDir()) return Texts::tr("'%1' is not a folder.").arg(folder);
    if (::access(QFile::encodeName(folder).constData(), X_OK) != 0)
        return Texts::tr("The folder '%1' may not be entered.").arg(folder);
    return {};
}

}  // namespace

std::optional<QByteArray> createBookmark(const QString& folder, QString& error) {
    error = whyNotUsable(folder);
    if (!error.isEmpty()) return std::nullopt;
    return QFileInfo(folder).canonicalFilePath().toUtf8();
}

std::optional<QString> resolveBookmark(const QByteArray& bookmark, QString& error) {
    const QString folder = placeOf(bookmark);
    error = whyNotUsable(folder);
    return error.isEmpty() ? std::optional(folder) : std::nullopt;
}

QString placeOf(const QByteArray& bookmark) {
    return QString::fromUtf8(bookmark);
}

bool startAccessing(const QString& folder) {
    if (!whyNotUsable(folder).isEmpty()) return false;
    ++counts()[folder];
    return true;
}

void stopAccessing(const QString& folder) {
    const auto found = counts().find(folder);
    if (found != counts().end() && --found.value() <= 0) counts().erase(found);
}

int openAccesses(const QString& folder) {
    return counts().value(folder);
}

}  // namespace folderaccess
