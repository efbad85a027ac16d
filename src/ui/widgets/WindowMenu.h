#pragma once

#include <functional>

class QAction;
class QWidget;

/// Puts a menu bar with the menu Window on top of a window beside the main one: show the main window, which
/// may be closed, and `close`, which is the window's own command. `window` has its layout already. Main
/// thread only.
void addWindowMenu(QWidget& window, QAction& close, const std::function<void()>& showMainWindow);
