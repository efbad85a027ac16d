#pragma once

#include <QString>

/// The application's name, version and folders. Nothing is cached; callable from any thread.
namespace ApplicationInfo {

/// The value of `key` in the application's information file, which is built into the program; empty if there
/// is none.
QString value(const char* key);

QString name();
QString version();
int buildNumber();
QString bundleIdentifier();

/// `$XDG_CONFIG_HOME/<bundle identifier>/settings.json`
QString settingsFilePath();
/// `$XDG_DATA_HOME/<bundle identifier>`: the application's private data.
QString homeInsideSandbox();
/// `Documents` in homeInsideSandbox(); created if it is missing.
QString documentsFolder();
/// The application's root folder: the parent of `bin` if the program is in a folder `bin` (installed tree,
/// build tree), else the program's folder. The path at the start of the process.
QString bundlePath();
/// `$RAVELIN_RESOURCES`, else the resource folder next to the program, in the build tree or the installed
/// tree.
QString resourceFolder();
/// Reports that the folder `before` was moved to `now`, so that resourceFolder() follows.
void followMove(const QString& before, const QString& now);

}  // namespace ApplicationInfo
