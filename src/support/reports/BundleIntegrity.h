#pragma once

#include <QString>

#include <optional>

/// Checks that private frameworks were unpacked correctly: a framework has its program as a symbolic link, or
/// an alias, at its top level. Returns the first wrong path; null if all are intact or the folder does not
/// exist. Callable from any thread.
std::optional<QString> damagedFramework(const QString& folder);
