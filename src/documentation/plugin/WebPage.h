#pragma once

#include "documentation/rules/NavigationPolicy.h"

#include <QElapsedTimer>
#include <QWebEnginePage>

/// A page that stays at home: what leads elsewhere goes to the user's browser, and nothing opens windows,
/// asks the user, takes files, or speaks to our terminal.
class WebPage : public QWebEnginePage {
    Q_OBJECT

public:
    enum class Scripts { Forbidden, Allowed };

    /// `profile` outlives the page.
    WebPage(QWebEngineProfile* profile, navigation::Home home, Scripts scripts);

    /// The user pressed or released something in the view that shows this page.
    void noteInput() { m_sinceInput.start(); }
    /// Runs `script` in a world of its own, whether the page may run scripts or not.
    void run(const QString& script);
    /// The same for every page that is loaded from now on, before it is seen.
    void runWhenReady(const QString& script);

Q_SIGNALS:
    /// An address that does not belong into the view.
    void leaving(const QUrl& address);
    void arrived();
    /// The address could not be loaded, by the network's or the server's fault, or was not let in.
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
    void judge(const QWebEngineLoadingInfo& info);

    const navigation::Home m_home;
    const Scripts m_scripts;
    QElapsedTimer m_sinceInput;
};
