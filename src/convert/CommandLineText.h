#pragma once

#include <QString>
#include <QStringList>

/// The tool's command line in a form that can be pasted into a shell: "ffmpeg" and the arguments, quoted
/// where necessary. Pure; any thread.
QString commandLineText(const QStringList& arguments);
