#pragma once

#include <QString>
#include <QStringList>

/// The reports that crashes leave, files whose names begin with the application's and end with ".crash".
namespace crashlogs {

/// `<private data>/DiagnosticReports`, where the application's own crashes are reported; missing before the
/// first.
QString ownFolder();
/// Where services of the system put what they report of crashes.
QString systemFolder();

/// Whether a file is a report of the application's: letter case and accents of the beginning do not matter,
/// the ending is exact. An application without a name has none.
bool isReport(const QString& fileName, const QString& appName);

/// The paths of the reports in the folders, folder after folder, the oldest name of each first.
QStringList paths(const QStringList& folders, const QString& appName);

/// The report up to the first "/System/Library/".
QString shortened(const QString& report);

/// What the reports say, each shortened(); empty where one cannot be read.
QStringList contents(const QStringList& paths);

/// Removes the oldest of the application's own reports, so that the newest twenty stay, and has the log name
/// the newest.
void tidyUp();

}  // namespace crashlogs
