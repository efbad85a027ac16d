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

/// Parts that the application provides for the window.
struct WindowParts {
    using AddMenu =
        std::function<void(QWidget& window, QAction& close, const std::function<void()>& showMainWindow)>;

    QIcon closeIcon;  ///< Icon of the find bar's close button.
    /// Adds a menu bar with `close` and a command for the main window; may be null.
    AddMenu addMenu;
};

/// The documentation window, with a tab for each page. A page is loaded when its tab is first shown, the
/// first page after the window was painted. The window deletes itself and its views when it is closed. Main
/// thread only.
class DocumentationWindow : public QWidget {
    Q_OBJECT

public:
    /// `engine` must outlive the window.
    DocumentationWindow(WebEngine& engine, const WindowParts& parts);
    ~DocumentationWindow() override;

    void bringToFront();
    /// Shows the tab at `index`; ignores an invalid index.
    void selectTab(int index);
    /// Opens an address that a page links to: another documentation page in its tab, anything else in the
    /// browser.
    void openAddress(const QUrl& address);

Q_SIGNALS:
    /// The engine does not start; show the page at `index` elsewhere. The window emits nothing after this.
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

    /// The contents of a tab. `view` is null except for web pages.
    struct Tab {
        QWidget* content = nullptr;
        WebView* view = nullptr;
        QString place;  ///< URL fragment to scroll to after loading.
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
