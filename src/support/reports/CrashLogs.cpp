#include "support/reports/CrashLogs.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Text.h"

#include <QDir>
#include <QFile>

namespace crashlogs {

namespace {

constexpr qsizetype kMaximumKept = 20;

/// Removes case and accents.
QString folded(const QString& text) {
    QString result = text.normalized(QString::NormalizationForm_D);
    result.removeIf([](QChar c) { return c.category() == QChar::Mark_NonSpacing; });
    return result.toCaseFolded();
}

}  // namespace

QString ownFolder() {
    return ApplicationInfo::homeInsideSandbox() + "/DiagnosticReports";
}

QString systemFolder() {
    return "/var/crash";
}

bool isReport(const QString& fileName, const QString& appName) {
    return !appName.isEmpty() && folded(fileName).startsWith(folded(appName)) && fileName.endsWith(".crash");
}

QStringList paths(const QStringList& folders, const QString& appName) {
    QStringList result;
    for (const QString& folder : folders) {
        const QStringList names = QDir(folder).entryList(
            QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
        for (const QString& name : names) {
            if (isReport(name, appName)) result.append(folder + u'/' + name);
        }
    }
    return result;
}

QString shortened(const QString& report) {
    return text::piece(report, u"/System/Library/", 0)->toString();
}

QStringList contents(const QStringList& paths) {
    QStringList reports;
    for (const QString& path : paths) {
        reports.append(shortened(text::fromData(files::contents(path).value_or(QByteArray()))));
    }
    return reports;
}

void tidyUp() {
    QStringList reports = paths({ownFolder()}, ApplicationInfo::name());
    if (reports.isEmpty()) return;
    logInformation("Info: crash reports: %li, the newest is %@", reports.size(), reports.last());
    while (reports.size() > kMaximumKept)
        QFile::remove(reports.takeFirst());
}

}  // namespace crashlogs
