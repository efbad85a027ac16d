#pragma once

#include <QString>
#include <QStringList>

/// The tool's command line as a person would paste it into a shell: "ffmpeg" and the arguments, quoted where
/// they need it.
QString commandLineText(const QStringList& arguments);
