#pragma once

#include <QString>

/// Scripts that the view runs in a page, in a world of their own, also where the page may not run any.
namespace pagescripts {

/// The page cannot be scrolled.
QString forbidScrolling();

/// A page does without its list of all pages.
QString hideListOfPages();

/// Shows a page that knows light and dark colours in those wanted, whatever the engine was started with.
QString useColours(bool dark);

}  // namespace pagescripts
