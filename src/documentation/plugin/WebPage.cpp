#include "documentation/plugin/WebPage.h"

#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>

WebPage::WebPage(QWebEngineProfile* profile, navigation::Home home, Scripts scripts)
    : QWebEnginePage(profile), m_home(std::move(home)), m_scripts(scripts) {
    const bool mayRun = scripts == Scripts::Allowed;
    settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, mayRun);
    settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    // Our own scripts read the style sheet of a local page; the page itself runs no scripts.
    settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, !mayRun);
    settings()->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    settings()->setAttribute(QWebEngineSettings::PluginsEnabled, false);
    settings()->setAttribute(QWebEngineSettings::PdfViewerEnabled, false);
    settings()->setAttribute(QWebEngineSettings::FullScreenSupportEnabled, false);
    settings()->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);
    connect(this, &QWebEnginePage::loadingChanged, this, &WebPage::handleLoading);
    connect(this, &QWebEnginePage::newWindowRequested, this, [this](QWebEngineNewWindowRequest& request) {
        if (isLinkClick(request.isUserInitiated())) Q_EMIT leaving(request.requestedUrl());
    });
}

void WebPage::run(const QString& script) {
    runJavaScript(script, QWebEngineScript::ApplicationWorld);
}

void WebPage::runWhenReady(const QString& source) {
    QWebEngineScript script;
    script.setInjectionPoint(QWebEngineScript::DocumentReady);
    script.setWorldId(QWebEngineScript::ApplicationWorld);
    script.setSourceCode(source);
    scripts().insert(script);
}

bool WebPage::acceptNavigationRequest(const QUrl& url, NavigationType type, bool /*isMainFrame*/) {
    const bool isClick = isLinkClick(type == NavigationTypeLinkClicked);
    if (navigation::placeFor(url, isClick, m_home) == navigation::Place::View) return true;
    Q_EMIT leaving(url);
    return false;
}

bool WebPage::isLinkClick(bool engineSaysSo) const {
    // Without scripts, only the user can follow a link, possibly by a screen reader that sends no key events.
    if (m_scripts == Scripts::Forbidden) return engineSaysSo;
    std::optional<std::chrono::milliseconds> sinceInput;
    if (m_sinceInput.isValid()) sinceInput = std::chrono::milliseconds(m_sinceInput.elapsed());
    return navigation::isLinkClick(engineSaysSo, sinceInput);
}

void WebPage::handleLoading(const QWebEngineLoadingInfo& info) {
    // A page missing on the server is a failure, too.
    constexpr int kAborted = -3;  // Rejected, or replaced by the next navigation.
    if (info.status() == QWebEngineLoadingInfo::LoadSucceededStatus) {
        Q_EMIT arrived();
    } else if (info.status() == QWebEngineLoadingInfo::LoadFailedStatus && info.errorCode() != kAborted) {
        Q_EMIT failed(info.url().toString() + QStringLiteral(": ") + info.errorString());
    }
}
