#pragma once

#include "documentation/rules/NavigationPolicy.h"

#include <QElapsedTimer>
#include <QWebEnginePage>

/// A page restricted to its own addresses: all others are emitted by leaving(). Pages cannot open windows or
/// dialogs, choose files, or print to the terminal. Main thread only.
class WebPage : public QWebEnginePage {
    Q_OBJECT

public:
    enum class Scripts { Forbidden, Allowed };

    /// `profile` must outlive the page.
    WebPage(QWebEngineProfile* profile, navigation::Home home, Scripts scripts);

    /// Reports that the user pressed or released a key or button in the view that shows this page.
    void noteInput() { m_sinceInput.start(); }
    /// Runs `script` isolated from the page's scripts, even if the page may run none.
    void run(const QString& script);
    /// The same for each page loaded from now on, before it is shown.
    void runWhenReady(const QString& script);

Q_SIGNALS:
    /// The page wants to open an address that does not belong to the view.
    void leaving(const QUrl& address);
    void arrived();
    /// The address could not be loaded, because of the network or the server, or was rejected.
    void failed(const QString& reason);

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    void javaScriptAlert(const QUrl&, const QString&) override {}
    bool javaScriptConfirm(const QUrl&, const QString&) override { return false; }
    bool javaScriptPrompt(const QUrl&, const QString&, const QString&, QString*) override { return false; }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString&, int,
                                  const QString&) override {}
    QStringList chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) override { return {}; }

private:
    bool isLinkClick(bool engineSaysSo) const;
    void handleLoading(const QWebEngineLoadingInfo& info);

    const navigation::Home m_home;
    const Scripts m_scripts;
    QElapsedTimer m_sinceInput;
};
