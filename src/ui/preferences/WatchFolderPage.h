#pragma once

class QWidget;
class WatchFolder;

/// Has the page of the watch folder show what `watchFolder` does and hand the user's choice to it. Both live
/// as long as the page.
void joinWatchFolder(QWidget& page, WatchFolder& watchFolder);
