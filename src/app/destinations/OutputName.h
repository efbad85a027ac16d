#pragma once

#include "support/base/Texts.h"

#include <QString>

/// Names of outputs.
namespace outputname {

inline constexpr const char* kOverwritesSource = RAVELIN_TEXT(
    "You've tried to overwrite the source file with the target file. Thats the worst idea ever.");

/// "mp4", or "m4v" by the setting.
QString outputExtension();
/// The input's name with the output's extension, within what a file name may be long.
QString outputFileName(const QString& inputFileName);
/// Whether the path ends in an extension that an output may have.
bool hasOutputExtension(const QString& path);

/// Whether both paths lead to one file, by whatever links.
bool isSameFile(const QString& a, const QString& b);

}  // namespace outputname
