#include "support/reports/AppIdentity.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/reports/Vendor.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>

namespace appidentity {

namespace {

std::function<QString()>& otherName() {
    static std::function<QString()> name;
    return name;
}

QString checksumOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    return QString::fromLatin1(hash.result().toHex());
}

}  // namespace

QString supportAddress() {
    const QString address = ApplicationInfo::value("FeedbackEmail");
    return address.isEmpty() ? QString(vendor::kSupportAddress) : address;
}

QString supportRequestAppName() {
    return otherName() ? otherName()() : ApplicationInfo::name();
}

void setCustomSupportRequestAppName(std::function<QString()> name) {
    otherName() = std::move(name);
}

QString frameworksFolder() {
    return ApplicationInfo::resourceFolder() + "/Frameworks";
}

QString checksum() {
    return checksumOf(QCoreApplication::applicationFilePath());
}

QString checksumIncludingFrameworks() {
    constexpr qsizetype kShown = 10;
    QStringList sums{checksum().left(kShown)};
    const QDir frameworks(frameworksFolder());
    const QStringList entries = frameworks.entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QString& entry : entries) {
        const QString program = frameworks.filePath(entry) + u'/' + files::withoutExtension(entry);
        sums.append(checksumOf(program).left(kShown));
    }
    return sums.join(u' ');
}

}  // namespace appidentity
