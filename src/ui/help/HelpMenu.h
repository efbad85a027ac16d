#pragma once

class AppDelegate;
class QMenu;
class QWidget;

/// Connects the items of the Help menu. An item's property "tag" is the page of the documentation that it
/// opens, "makersPage" the number of one of the maker's web pages. `delegate` must outlive the menu; `window`
/// becomes the parent of the About window. Main thread only.
void setUpHelpMenu(const QMenu& menu, AppDelegate& delegate, QWidget& window);
