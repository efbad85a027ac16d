#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

/// Rules of a documentation view for addresses and zoom factors, as pure functions without dependencies on
/// the application, so that the web view's plugin can include them. Callable from any thread.
namespace navigation {

enum class Place { View, Browser };

/// The addresses that belong to a view; an empty one matches nothing.
struct Home {
    QUrl localPage;
    QUrl remotePage;  ///< expanded
    bool openOnlyClicksInBrowser = false;
};

/// The maximum time between the user's last mouse or key event and the navigation that it causes.
inline constexpr std::chrono::milliseconds kClickLasts{1000};

/// Whether the user clicked a link. The web engine reports navigation by scripts after loading as clicks, too
/// (`engineSaysSo`), so a recent input event is required: `sinceInput` ago in that page (null: never).
bool isLinkClick(bool engineSaysSo, std::optional<std::chrono::milliseconds> sinceInput);

/// Where to show `address`. `isLinkClick`: the user clicked a link; false for scripts, redirections and all
/// other navigation.
Place placeFor(const QUrl& address, bool isLinkClick, const Home& home);

/// Whether a page may open `address` with the desktop: web pages and mail only. Other schemes could start
/// programs or show private files.
bool mayBeOpenedOutside(const QUrl& address);

/// `address` with each "$(CFBundleIdentifier)" replaced by the application's bundle identifier.
QString expanded(const QString& address, const QString& bundleIdentifier);

/// Whether the factor differs from 1 by 0.0001 or more; null: no factor.
bool needsZoom(std::optional<double> factor);
/// The script that zooms a page by `factor`.
QString zoomScript(double factor);

}  // namespace navigation
