#pragma once

#include "documentation/rules/DocumentationPages.h"

#include <QIcon>
#include <QWidget>

#include <functional>

class FindBar;
class QAction;
class QTabWidget;
class WebEngine;
class WebView;

/// What the window has in common with the application's other windows.
struct WindowParts {
    using AddMenu =
        std::function<void(QWidget& window, QAction& close, const std::function<void()>& showMainWindow)>;

    QIcon closeIcon;  ///< On the find bar's close button.
    /// Puts a menu on top that has `close` and leads to the main window; may be null.
    AddMenu addMenu;
};

/// The documentation: a tab for each page. A page is loaded when its tab is first shown, the first one after
/// the window itself was drawn. The window deletes itself when it is closed, and takes with it what its pages
/// need.
class DocumentationWindow : public QWidget {
    Q_OBJECT

public:
    /// `engine` outlives the window.
    DocumentationWindow(WebEngine& engine, const WindowParts& parts);
    ~DocumentationWindow() override;

    void bringToFront();
    /// Shows the tab at `index`; one that is not there, or negative, leaves the tab as it is.
    void selectTab(int index);
    /// What the user clicked in a page, or what leads out of it: another page of ours is shown in its tab,
    /// anything else in the browser.
    void openAddress(const QUrl& address);

Q_SIGNALS:
    /// The engine does not start; the page at `index` is to be shown elsewhere. Nothing more comes of the
    /// window.
    void engineFailed(int index, const QString& why);
    /// The user wants the main window, which may be closed.
    void mainWindowRequested();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void setUpTabs();
    void setUpActions(const WindowParts::AddMenu& addMenu);
    QAction* addCommand(const QList<QKeySequence>& shortcuts, const std::function<void()>& command);
    void fillCurrentTab();
    void fillWithWebView(int index);
    void fillWithRichText(int index);
    void fillWithNotice(int index, const QString& sentence, bool canOpenInBrowser);
    void setContent(int index, QWidget* content);
    void pageFailed(int index, const QString& reason);
    void turnTabs(int by);
    void find(const QString& text, bool backwards);
    void magnify(double factor);

    /// What stands in a tab. `view` is null but for web pages.
    struct Tab {
        QWidget* content = nullptr;
        WebView* view = nullptr;
        QString place;  ///< Where in the page to begin.
    };
    Tab& currentTab();

    WebEngine& m_engine;
    const QList<DocumentationPage> m_pages = documentation::pages();
    QList<Tab> m_tabs;
    QTabWidget* m_tabView = nullptr;
    FindBar* m_findBar = nullptr;
    double m_magnification = 1;
    bool m_wasPainted = false;
};
