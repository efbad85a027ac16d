#pragma once

#include <QIcon>
#include <QString>

/// The application's own line icons, by name without folder and ending ("add", "state-failed"). They follow
/// the text colour of the palette, also when it changes while they are shown. Main thread only.
QIcon symbolicIcon(const QString& name);

/// The picture of the empty window, 4 : 3, in the palette's text colour and accent colour.
QIcon dropPicture();

/// The application's icon, also where no icon theme has it.
QIcon applicationIcon();
