#pragma once

#include <QString>
#include <QStringList>

/// Crash reports on disk: files whose names begin with the application's name and end with ".crash". Callable
/// from any thread.
namespace crashlogs {

/// `<private data>/DiagnosticReports`, the folder of the application's own reports; missing before the first
/// crash.
QString ownFolder();
/// The folder in which system services store crash reports.
QString systemFolder();

/// Whether a file is a report of the application. The application's name is compared without case and
/// accents, the ending exactly. False if `appName` is empty.
bool isReport(const QString& fileName, const QString& appName);

/// The paths of the reports, folder by folder, each sorted from the oldest name.
QStringList paths(const QStringList& folders, const QString& appName);

/// Cuts a report at the first "/System/Library/".
QString shortened(const QString& report);

/// The text of each report, shortened(); empty if it cannot be read.
QStringList contents(const QStringList& paths);

/// Keeps the newest twenty of the application's own reports, removes the others, and logs the newest.
void tidyUp();

}  // namespace crashlogs
