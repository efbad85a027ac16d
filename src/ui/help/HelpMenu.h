#pragma once

class AppDelegate;
class QMenu;
class QWidget;

/// Gives the items of the Help menu their work. An item's property "tag" is the page of the documentation
/// that it opens, "makersPage" the number of one of the maker's pages. `delegate` outlives the menu; `window`
/// is what the About window belongs to.
void setUpHelpMenu(const QMenu& menu, AppDelegate& delegate, QWidget& window);
