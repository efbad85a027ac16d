#pragma once

#include <QString>

/// Scripts that the view runs in a page, isolated from the page's own scripts
/// (QWebEngineScript::ApplicationWorld), even if the page may run none. Callable from any thread.
namespace pagescripts {

/// Prevents scrolling.
QString forbidScrolling();

/// Hides the page's list of all pages.
QString hideListOfPages();

/// Selects the light or dark colours of a page that supports both, independent of the engine's colour scheme.
QString applyColours(bool dark);

}  // namespace pagescripts
