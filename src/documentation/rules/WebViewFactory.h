#pragma once

#include <QString>
#include <QUrl>
#include <QtPlugin>

#include <functional>

class QWidget;

/// Services of the application for a web view. The plugin does not link the application's log, settings or
/// desktop. All functions are called on the main thread.
struct WebViewServices {
    QString documentsFolder;   ///< The folder of the local pages.
    QString bundleIdentifier;  ///< For "$(CFBundleIdentifier)" in addresses.
    /// Opens an address that does not belong to the view, in the user's browser.
    std::function<void(const QUrl&)> openInBrowser;
    /// Reports why the page cannot be shown, for the log. Called at most once, from inside the view: do not
    /// delete the view before control returns to the event loop.
    std::function<void(const QString& reason)> failed;
};

/// A view of one page, on the main thread only. It is a widget of the class PXWebView with these properties,
/// to be set before it is first shown and loads the page:
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

    /// The widget, owned by its parent; this object is deleted with it.
    virtual QWidget* widget() = 0;
    /// Scrolls to the place with this URL fragment.
    virtual void showPlace(const QString& fragment) = 0;
    /// Highlights all matches of `text` and moves to the next one; empty: clears the highlights. `found` is
    /// called later with the number of matches.
    virtual void find(const QString& text, bool backwards, const std::function<void(int)>& found) = 0;
    /// Sets the magnification; 1 is the page's own size. It applies in addition to the zoom factor, to all
    /// pages of the view.
    virtual void magnify(double factor) = 0;
};

/// The plugin's interface. Main thread only.
class WebViewFactory {
public:
    WebViewFactory() = default;
    WebViewFactory(const WebViewFactory&) = delete;
    WebViewFactory& operator=(const WebViewFactory&) = delete;
    virtual ~WebViewFactory() = default;

    /// Starts the engine; call once, before the first view, and only after the checks in WebEngineCheck: an
    /// engine that cannot run ends the process. Takes at least 0.1 s.
    virtual void start() = 0;
    /// The view is owned by `parent`. Cached pages are deleted with the last view.
    virtual WebView* makeView(const WebViewServices& services, QWidget* parent) = 0;
};

#define WebViewFactory_iid "example.ravelin.WebViewFactory/1"
Q_DECLARE_INTERFACE(WebViewFactory, WebViewFactory_iid)
