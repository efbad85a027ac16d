#pragma once

#include "support/base/Texts.h"

#include <QString>

/// Names of outputs. Any thread.
namespace outputname {

inline constexpr const char* kOverwritesSource = QT_TRANSLATE_NOOP(
    "Ravelin", "You've tried to overwrite the source file with the target file. Thats the worst idea ever.");

/// "mp4", or "m4v" if the setting says so.
QString outputExtension();
/// The input's name with the extension of outputs, shortened to the maximum length of a file name.
QString outputFileName(const QString& inputFileName);
/// Whether the path has one of the extensions that outputs may have.
bool hasOutputExtension(const QString& path);

/// Whether both paths name the same file; symbolic and hard links are resolved.
bool isSameFile(const QString& a, const QString& b);

}  // namespace outputname
