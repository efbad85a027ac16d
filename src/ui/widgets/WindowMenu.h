#pragma once

#include <functional>

class QAction;
class QWidget;

/// Adds a menu bar with the menu Window to a secondary window: a command that shows the main window, which
/// may be closed, and `close`, the window's own command. `window` must have its layout already. Main thread
/// only.
void addWindowMenu(QWidget& window, QAction& close, const std::function<void()>& showMainWindow);
