#pragma once

#include <QString>

#include <optional>

/// The first entry of the folder of private frameworks that was not unpacked as it should be, as the path
/// that is wrong: a framework keeps its program as a symbolic link, or an alias, at its top. Nothing: all are
/// intact, or there is no such folder.
std::optional<QString> damagedFramework(const QString& folder);
