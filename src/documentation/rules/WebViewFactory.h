#pragma once

#include <QString>
#include <QUrl>
#include <QtPlugin>

#include <functional>

class QWidget;

/// What a web view needs of the application around it. The plugin has no part of the application in it: no
/// log, no settings, no desktop. Everything is called on the main thread.
struct WebViewServices {
    QString documentsFolder;   ///< Where the local pages are.
    QString bundleIdentifier;  ///< For "$(CFBundleIdentifier)" in addresses.
    /// Opens an address that does not belong into the view, as the user's browser does.
    std::function<void(const QUrl&)> openInBrowser;
    /// The page cannot be shown, and why, for the log. Called at most once, from inside the view: do not
    /// delete it before control is back in the event loop.
    std::function<void(const QString& reason)> failed;
};

/// A view of one page. It is a widget of the class PXWebView with these properties, to be set before it is
/// first shown, which loads the page:
///
///     localHTMLName           QString  a file in the documents folder; empty: none
///     remoteHTMLURL           QString  an online copy, which replaces the local page when it arrives;
///                                      "$(CFBundleIdentifier)" in it is expanded; empty: none
///     zoomFactor              QVariant a number, which is applied once to the first page that loads; or none
///     disableScrolling        bool
///     openOnlyClicksInBrowser bool     redirections and scripts may lead elsewhere inside the view
class WebView {
public:
    WebView() = default;
    WebView(const WebView&) = delete;
    WebView& operator=(const WebView&) = delete;
    virtual ~WebView() = default;

    /// The widget itself, owned by its parent; it takes this along.
    virtual QWidget* widget() = 0;
    /// Scrolls to the place that stands behind "#" in an address.
    virtual void showPlace(const QString& fragment) = 0;
    /// Marks the next place that has `text`, and all others; empty: marks none. `found` gets how many there
    /// are, later.
    virtual void find(const QString& text, bool backwards, const std::function<void(int)>& found) = 0;
    /// 1: the page's own size. Beside the zoom factor, and not ended by another page.
    virtual void magnify(double factor) = 0;
};

/// What the plugin is to those who load it.
class WebViewFactory {
public:
    WebViewFactory() = default;
    WebViewFactory(const WebViewFactory&) = delete;
    WebViewFactory& operator=(const WebViewFactory&) = delete;
    virtual ~WebViewFactory() = default;

    /// Starts the engine; call once, before the first view, when nothing speaks against it: an engine that
    /// cannot run ends the process. Takes a tenth of a second and more.
    virtual void start() = 0;
    /// Owned by `parent`. The last view that goes takes with it what was kept of the pages.
    virtual WebView* makeView(const WebViewServices& services, QWidget* parent) = 0;
};

#define WebViewFactory_iid "example.ravelin.WebViewFactory/1"
Q_DECLARE_INTERFACE(WebViewFactory, WebViewFactory_iid)
