#pragma once

class QWidget;
class WatchFolder;

/// Connects the page of the watch folder with `watchFolder`: the page shows its state and passes the user's
/// choices on. `watchFolder` must outlive the page. Main thread only.
void joinWatchFolder(QWidget& page, WatchFolder& watchFolder);
