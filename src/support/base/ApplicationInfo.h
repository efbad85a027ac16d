#pragma once

#include <QString>

/// What the application is and where its things are. Asked anew at every call; callable from any thread.
namespace ApplicationInfo {

/// The text under `key` in the application's information file, which is built into the program; empty: none.
QString value(const char* key);

QString name();
QString version();
int buildNumber();
QString bundleIdentifier();

/// `$XDG_CONFIG_HOME/<bundle identifier>/settings.json`
QString settingsFilePath();
/// `$XDG_DATA_HOME/<bundle identifier>`: everything that the application keeps for itself.
QString homeInsideSandbox();
/// `Documents` in it, made when it is missing.
QString documentsFolder();
/// The folder that holds the application and what belongs to it: the one above `bin` where the program lies
/// in a `bin` (of an installed tree, of the build tree), else the program's own. As it was at the start.
QString bundlePath();
/// `$RAVELIN_RESOURCES`, else the folder beside the program: of the build tree or of an installed tree.
QString resourceFolder();
/// What was in the folder `before` is in `now`: resources that lay there are found again.
void followMove(const QString& before, const QString& now);

}  // namespace ApplicationInfo
