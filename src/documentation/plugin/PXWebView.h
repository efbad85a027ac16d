#pragma once

#include "documentation/rules/WebViewFactory.h"

#include <QFrame>
#include <QVariant>

#include <memory>
#include <optional>

class QWebEngineProfile;
class QWebEngineView;
class WebPage;

/// Shows a page that is installed with the application. When it is first shown, it loads the local page and
/// then, hidden, its online copy, which replaces the local page once it is loaded. A failure to load the copy
/// is ignored. Main thread only.
class PXWebView : public QFrame, public WebView {
    Q_OBJECT
    Q_PROPERTY(QString localHTMLName MEMBER m_localHTMLName)
    Q_PROPERTY(QString remoteHTMLURL MEMBER m_remoteHTMLURL)
    Q_PROPERTY(QVariant zoomFactor MEMBER m_zoomFactor)
    Q_PROPERTY(bool disableScrolling MEMBER m_disableScrolling)
    Q_PROPERTY(bool openOnlyClicksInBrowser MEMBER m_openOnlyClicksInBrowser)

public:
    PXWebView(WebViewServices services, QWidget* parent);
    ~PXWebView() override;

    QWidget* widget() override { return this; }
    void showPlace(const QString& fragment) override;
    void find(const QString& text, bool backwards, const std::function<void(int)>& found) override;
    void magnify(double factor) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void load();
    void loadRemote();
    std::unique_ptr<WebPage> makePage(const QUrl& address, bool mayRunScripts);
    void setPage(std::unique_ptr<WebPage> page);
    void pageHasLoaded();
    void applyColours();
    void openOutside(const QUrl& address);
    void fail(const QString& reason);
    void processHasEnded(const WebPage* page, int code);
    void showContextMenu(const QPoint& position);
    std::optional<double> zoomFactor() const;

    const WebViewServices m_services;
    QString m_localHTMLName;
    QString m_remoteHTMLURL;
    QVariant m_zoomFactor;
    bool m_disableScrolling = false;
    bool m_openOnlyClicksInBrowser = false;

    QWebEngineView* m_view = nullptr;
    const std::shared_ptr<QWebEngineProfile> m_profile;  ///< Outlives the pages.
    std::unique_ptr<WebPage> m_page;                     ///< The page in the view.
    std::unique_ptr<WebPage> m_remotePage;               ///< The online copy, while it is loading.
    QUrl m_localPage;
    QString m_place;
    bool m_isScrollingForbidden = false;
    bool m_isLoadingBegun = false;
    bool m_isRemoteBegun = false;
    bool m_hasFailed = false;
};
