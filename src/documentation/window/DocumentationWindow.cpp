#include "documentation/window/DocumentationWindow.h"

#include "documentation/rules/NavigationPolicy.h"
#include "documentation/rules/WebViewFactory.h"
#include "documentation/window/FindBar.h"
#include "documentation/window/PXRTFView.h"
#include "documentation/window/PageNotice.h"
#include "documentation/window/WebEngine.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Log.h"
#include "support/desktop/Desktop.h"
#include "support/network/Download.h"
#include "support/store/Defaults.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>
#include <QPointer>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr QLatin1StringView kGeometryKey("DocumentationWindowGeometry");
constexpr int kWidth = 820;
constexpr int kHeight = 640;
constexpr int kLeastWidth = 560;
constexpr int kLeastHeight = 400;

}  // namespace

DocumentationWindow::DocumentationWindow(WebEngine& engine, const WindowParts& parts)
    : QWidget(nullptr, Qt::Window),
      m_engine(engine),
      m_tabs(m_pages.size()),
      m_tabView(new QTabWidget(this)),
      m_findBar(new FindBar(parts.closeIcon, this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("DocumentationWindow"));
    setWindowTitle(tr("Documentation"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    layout->addWidget(m_tabView);
    layout->addWidget(m_findBar);
    setUpTabs();
    setUpActions(parts.addMenu);
    connect(m_findBar, &FindBar::searched, this, &DocumentationWindow::find);
    connect(m_findBar, &FindBar::closed, this, [this] {
        find({}, false);
        m_tabView->currentWidget()->setFocus();
    });
    setMinimumSize(kLeastWidth, kLeastHeight);
    resize(kWidth, kHeight);
    if (const QByteArray geometry = defaultObject(kGeometryKey).toByteArray(); !geometry.isEmpty())
        restoreGeometry(geometry);
}

DocumentationWindow::~DocumentationWindow() {
    // Deleting tabs changes the current tab, and pages may still emit signals: delete them while all members
    // exist.
    m_tabView->disconnect(this);
    delete m_tabView;
}

void DocumentationWindow::setUpTabs() {
    m_tabView->setDocumentMode(true);
    m_tabView->setAccessibleName(windowTitle());
    for (const DocumentationPage& page : m_pages) {
        auto* tab = new QWidget;
        tab->setAccessibleName(page.title);
        // Show the page's background colour until it is loaded, to avoid flashing.
        tab->setBackgroundRole(QPalette::Base);
        tab->setAutoFillBackground(true);
        auto* layout = new QVBoxLayout(tab);
        layout->setContentsMargins({});
        m_tabView->addTab(tab, page.title);
    }
    connect(m_tabView, &QTabWidget::currentChanged, this, [this] {
        m_findBar->close();
        if (m_wasPainted) fillCurrentTab();
    });
}

QAction* DocumentationWindow::addCommand(const QList<QKeySequence>& shortcuts,
                                         const std::function<void()>& command) {
    auto* action = new QAction(this);
    action->setShortcuts(shortcuts);
    connect(action, &QAction::triggered, this, command);
    addAction(action);
    return action;
}

void DocumentationWindow::setUpActions(const WindowParts::AddMenu& addMenu) {
    QAction* closing = addCommand({QKeySequence(Qt::CTRL | Qt::Key_W)}, [this] { close(); });
    if (addMenu) addMenu(*this, *closing, [this] { Q_EMIT mainWindowRequested(); });
    addCommand({QKeySequence(Qt::Key_Escape)}, [this] {
        if (m_findBar->isVisible()) {
            m_findBar->close();
        } else {
            close();
        }
    });
    addCommand({QKeySequence(Qt::CTRL | Qt::Key_Tab), QKeySequence(Qt::CTRL | Qt::Key_PageDown)},
               [this] { turnTabs(1); });
    addCommand({QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab),
                QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab), QKeySequence(Qt::CTRL | Qt::Key_PageUp)},
               [this] { turnTabs(-1); });
    addCommand({QKeySequence(Qt::CTRL | Qt::Key_F)}, [this] { m_findBar->open(); });
    addCommand({QKeySequence(Qt::Key_F3), QKeySequence(Qt::CTRL | Qt::Key_G)},
               [this] { find(m_findBar->text(), false); });
    constexpr double kStep = 1.1;
    addCommand({QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)},
               [this] { magnify(m_magnification * kStep); });
    addCommand({QKeySequence(Qt::CTRL | Qt::Key_Minus)}, [this] { magnify(m_magnification / kStep); });
    addCommand({QKeySequence(Qt::CTRL | Qt::Key_0)}, [this] { magnify(1); });
}

void DocumentationWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void DocumentationWindow::selectTab(int index) {
    if (index >= 0 && index < m_tabView->count()) m_tabView->setCurrentIndex(index);
}

void DocumentationWindow::turnTabs(int by) {
    const int count = m_tabView->count();
    m_tabView->setCurrentIndex((m_tabView->currentIndex() + by + count) % count);
}

DocumentationWindow::Tab& DocumentationWindow::currentTab() {
    return m_tabs[m_tabView->currentIndex()];
}

void DocumentationWindow::openAddress(const QUrl& address) {
    // A view accepts only its own page. Links between our own pages would open in the browser; show their
    // tabs instead.
    if (const auto index = documentation::indexOf(address)) {
        Tab& tab = m_tabs[*index];
        if (tab.view) {
            tab.view->showPlace(address.fragment());
        } else {
            tab.place = address.fragment();
        }
        selectTab(*index);
    } else if (!navigation::mayBeOpenedOutside(address)) {
        logError("A page of the documentation leads to %@, which is not opened", address.toString());
    } else {
        sharedDesktop().openUrl(address);
    }
}

void DocumentationWindow::fillCurrentTab() {
    const int index = m_tabView->currentIndex();
    if (m_tabs[index].content) return;
    const DocumentationPage& page = m_pages[index];
    const QString path = documentation::pathOf(page);
    if (!QFileInfo(path).isReadable()) {
        logError("The page %@ of the documentation is missing", path);
        fillWithNotice(index, tr("This page is missing. It should be at %1.").arg(path), false);
    } else if (page.kind == DocumentationPage::Kind::Html) {
        fillWithWebView(index);
    } else {
        fillWithRichText(index);
    }
}

void DocumentationWindow::fillWithWebView(int index) {
    QString why;
    WebViewFactory* factory = m_engine.factory(why);
    if (!factory) {
        Q_EMIT engineFailed(index, why);
        return;
    }
    WebViewServices services;
    services.documentsFolder = documentation::folder();
    services.bundleIdentifier = ApplicationInfo::bundleIdentifier();
    services.openInBrowser = [this](const QUrl& address) { openAddress(address); };
    services.failed = [self = QPointer(this), index](const QString& reason) {
        if (!self) return;
        // Do not delete the view during its own call.
        QTimer::singleShot(0, self, [self, index, reason] { self->pageFailed(index, reason); });
    };
    WebView* view = factory->makeView(services, this);
    QWidget* widget = view->widget();
    widget->setProperty("localHTMLName", m_pages[index].name);
    widget->setProperty("remoteHTMLURL", m_pages[index].remoteHTMLURL);
    // The vendor may redirect a page, which must not open a browser unasked.
    widget->setProperty("openOnlyClicksInBrowser", true);
    if (!m_tabs[index].place.isEmpty()) view->showPlace(m_tabs[index].place);
    view->magnify(m_magnification);
    m_tabs[index].view = view;
    setContent(index, widget);
}

void DocumentationWindow::fillWithRichText(int index) {
    auto* view = new PXRTFView(this);
    view->setProperty("localRTFName", m_pages[index].name);
    view->setProperty("remoteHTMLURL", m_pages[index].remoteHTMLURL);
    view->setDownloader([view](const QUrl& url, const std::function<void(const QString&)>& done) {
        download::start(url, view,
                        [done](const download::Page& page) { done(page.text().value_or(QString())); });
    });
    setContent(index, view);
}

void DocumentationWindow::fillWithNotice(int index, const QString& sentence, bool canOpenInBrowser) {
    auto* notice = new PageNotice(sentence, canOpenInBrowser, this);
    connect(notice, &PageNotice::browserRequested, this, [this, index] {
        sharedDesktop().openUrl(QUrl::fromLocalFile(documentation::pathOf(m_pages[index])));
    });
    setContent(index, notice);
}

void DocumentationWindow::setContent(int index, QWidget* content) {
    content->setAccessibleName(m_pages[index].title);
    QWidget* tab = m_tabView->widget(index);
    if (m_tabs[index].content) m_tabs[index].content->deleteLater();
    m_tabs[index].content = content;
    tab->layout()->addWidget(content);
    tab->setFocusProxy(content);
    if (index == m_tabView->currentIndex() && !m_tabView->tabBar()->hasFocus()) content->setFocus();
}

void DocumentationWindow::pageFailed(int index, const QString& reason) {
    logError("The page %@ of the documentation is not shown: %@", m_pages[index].name, reason);
    m_tabs[index].view = nullptr;
    fillWithNotice(index, tr("This page cannot be shown here."), true);
}

void DocumentationWindow::find(const QString& text, bool backwards) {
    if (WebView* view = currentTab().view) {
        view->find(text, backwards, [bar = QPointer(m_findBar)](int places) {
            if (bar) bar->setFound(places);
        });
    } else if (auto* browser = qobject_cast<QTextBrowser*>(currentTab().content)) {
        m_findBar->setFound(0);
        const auto flags = backwards ? QTextDocument::FindBackward : QTextDocument::FindFlags();
        if (text.isEmpty()) {
            browser->setTextCursor(QTextCursor(browser->document()));
        } else if (!browser->find(text, flags)) {
            // Continue from the other end.
            browser->moveCursor(backwards ? QTextCursor::End : QTextCursor::Start);
            browser->find(text, flags);
        }
    }
}

void DocumentationWindow::magnify(double factor) {
    constexpr double kLeast = 0.5;
    constexpr double kMaximum = 3;
    m_magnification = std::clamp(factor, kLeast, kMaximum);
    for (const Tab& tab : m_tabs) {
        if (tab.view) tab.view->magnify(m_magnification);
    }
}

bool DocumentationWindow::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::Paint && !std::exchange(m_wasPainted, true))
        QTimer::singleShot(0, this, &DocumentationWindow::fillCurrentTab);
    return handled;
}

void DocumentationWindow::closeEvent(QCloseEvent* event) {
    setDefaultObject(kGeometryKey, saveGeometry());
    event->accept();
}
