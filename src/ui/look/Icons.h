#pragma once

#include "ui/look/Colors.h"

#include <QIcon>
#include <QString>

/// The application's own line icons, by name without folder and extension ("add", "state-failed"). They have
/// the text colour of the palette and follow its changes. The functions of this header: main thread only.
QIcon symbolicIcon(const QString& name);
/// The same in the colour of a text with this tone.
QIcon symbolicIcon(const QString& name, colors::Tone tone);

/// The picture of the empty window, 4 : 3, in the palette's text colour and accent colour.
QIcon dropPicture();

/// The application's icon, also if no icon theme contains it.
QIcon applicationIcon();
