#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

/// What a view of a documentation page does with addresses and sizes. Rules only: nothing here loads or opens
/// anything, and nothing here knows the rest of the application, so that the web view's plugin can carry it.
namespace navigation {

enum class Place { View, Browser };

/// The addresses that belong to a view; an empty one belongs to nothing.
struct Home {
    QUrl localPage;
    QUrl remotePage;  ///< expanded
    bool openOnlyClicksInBrowser = false;
};

/// How long after the user's last mouse or key event a page may take to follow a link.
inline constexpr std::chrono::milliseconds kClickLasts{1000};

/// Whether the user clicked a link. The web engine says so of scripts, too, when they run after the page has
/// loaded: `engineSaysSo` needs the user's hand, `sinceInput` ago in that page (null: never).
bool isLinkClick(bool engineSaysSo, std::optional<std::chrono::milliseconds> sinceInput);

/// Where `address` is shown. `isLinkClick`: the user clicked a link; false for everything else that loads an
/// address, scripts and redirections included.
Place placeFor(const QUrl& address, bool isLinkClick, const Home& home);

/// Whether a page may have the desktop open `address`: pages of the web and mail. Anything else could start a
/// program or show a file that the page has no business with.
bool mayBeOpenedOutside(const QUrl& address);

/// `address` with the application's bundle identifier for every "$(CFBundleIdentifier)".
QString expanded(const QString& address, const QString& bundleIdentifier);

/// The factor differs from 1 by 0.0001 or more. Nothing is no factor.
bool needsZoom(std::optional<double> factor);
/// The script that zooms a page.
QString zoomScript(double factor);

}  // namespace navigation
