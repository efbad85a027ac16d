#include "documentation/rules/NavigationPolicy.h"

#include <QSet>

#include <cmath>

namespace navigation {

namespace {

bool beginsWith(const QUrl& address, const QUrl& own) {
    if (own.isEmpty()) return false;
    // The engine and Qt percent-encode different characters of a path.
    if (own.isLocalFile())
        return address.isLocalFile() && address.toLocalFile().startsWith(own.toLocalFile());
    QUrl beginning = own;
    // Marks the end of the host: "https://maker.example" must not match "https://maker.example.org".
    if (beginning.path().isEmpty()) beginning.setPath(QStringLiteral("/"));
    return address.toString(QUrl::FullyEncoded).startsWith(beginning.toString(QUrl::FullyEncoded));
}

}  // namespace

bool isLinkClick(bool engineSaysSo, std::optional<std::chrono::milliseconds> sinceInput) {
    return engineSaysSo && sinceInput && *sinceInput <= kClickLasts;
}

Place placeFor(const QUrl& address, bool isLinkClick, const Home& home) {
    if (beginsWith(address, home.localPage) || beginsWith(address, home.remotePage)) return Place::View;
    if (address.toString() == u"about:blank") return Place::View;
    if (home.openOnlyClicksInBrowser && !isLinkClick) return Place::View;
    return Place::Browser;
}

bool mayBeOpenedOutside(const QUrl& address) {
    static const QSet<QString> schemes = {"http", "https", "mailto"};
    return address.isValid() && schemes.contains(address.scheme());
}

QString expanded(const QString& address, const QString& bundleIdentifier) {
    return QString(address).replace(QLatin1String("$(CFBundleIdentifier)"), bundleIdentifier);
}

bool needsZoom(std::optional<double> factor) {
    // 1.0001 counts as a factor, although its binary difference from 1 is slightly smaller than 0.0001.
    constexpr double kLeast = 0.0001 - 1e-9;
    return factor && std::abs(*factor - 1) >= kLeast;
}

QString zoomScript(double factor) {
    return QStringLiteral("document.documentElement.style.zoom = \"%1\"").arg(factor, 0, 'f', 4);
}

}  // namespace navigation
