#pragma once

#include <QString>

struct CommandDescription;

/// Scripts that let a shell complete commands, options, paths and names of settings. Options that take a
/// value complete it by its placeholder: FILE, FOLDER, KEY=VALUE.
namespace completions {

QString bash(const CommandDescription& program);
QString zsh(const CommandDescription& program);
QString fish(const CommandDescription& program);

}  // namespace completions
