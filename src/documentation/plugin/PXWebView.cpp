#include "documentation/plugin/PXWebView.h"

#include "documentation/plugin/Engine.h"
#include "documentation/plugin/PageScripts.h"
#include "documentation/plugin/WebPage.h"
#include "documentation/rules/NavigationPolicy.h"

#include <QEvent>
#include <QMenu>
#include <QSet>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineContextMenuRequest>
#include <QWebEngineFindTextResult>
#include <QWebEngineHistory>
#include <QWebEngineSettings>
#include <QWebEngineView>

PXWebView::PXWebView(WebViewServices services, QWidget* parent)
    : QFrame(parent),
      m_services(std::move(services)),
      m_view(new QWebEngineView(this)),
      m_profile(engine::profile()) {
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_view);
    setFocusProxy(m_view);
    m_view->setAcceptDrops(false);  // The page would play a dropped movie.
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_view, &QWidget::customContextMenuRequested, this, &PXWebView::showContextMenu);
    m_view->installEventFilter(this);
}

PXWebView::~PXWebView() {
    delete m_view;  // Must be deleted before its page.
}

/// Observes the user's input in the page. The events go to a widget of the engine, which is created with a
/// page.
bool PXWebView::eventFilter(QObject* watched, QEvent* event) {
    static const QSet<QEvent::Type> inputs = {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                              QEvent::KeyPress,         QEvent::KeyRelease,
                                              QEvent::TouchBegin,       QEvent::TouchEnd};
    if (watched == m_view && event->type() == QEvent::ChildAdded) {
        static_cast<QChildEvent*>(event)->child()->installEventFilter(this);
    } else if (m_page && inputs.contains(event->type())) {
        m_page->noteInput();
    }
    return QFrame::eventFilter(watched, event);
}

void PXWebView::showEvent(QShowEvent* event) {
    QFrame::showEvent(event);
    if (!std::exchange(m_isLoadingBegun, true)) load();
}

std::optional<double> PXWebView::zoomFactor() const {
    bool isNumber = false;
    const double factor = m_zoomFactor.toDouble(&isNumber);
    return isNumber ? std::optional(factor) : std::nullopt;
}

std::unique_ptr<WebPage> PXWebView::makePage(const QUrl& address, bool mayRunScripts) {
    const navigation::Home home{m_localPage,
                                QUrl(navigation::expanded(m_remoteHTMLURL, m_services.bundleIdentifier)),
                                m_openOnlyClicksInBrowser};
    auto page = std::make_unique<WebPage>(
        m_profile.get(), home, mayRunScripts ? WebPage::Scripts::Allowed : WebPage::Scripts::Forbidden);
    page->setBackgroundColor(palette().color(QPalette::Base));
    page->runWhenReady(pagescripts::hideListOfPages());  // The window has tabs instead.
    if (m_isScrollingForbidden) {
        page->settings()->setAttribute(QWebEngineSettings::ShowScrollBars, false);
        page->runWhenReady(pagescripts::forbidScrolling());
    }
    connect(page.get(), &WebPage::leaving, this, &PXWebView::openOutside);
    connect(page.get(), &QWebEnginePage::renderProcessTerminated, this,
            [this, page = page.get()](QWebEnginePage::RenderProcessTerminationStatus status, int code) {
                if (status != QWebEnginePage::NormalTerminationStatus) processHasEnded(page, code);
            });
    QUrl place = address;
    if (!m_place.isEmpty()) place.setFragment(m_place);
    page->load(place);
    return page;
}

void PXWebView::load() {
    m_isScrollingForbidden = m_disableScrolling || navigation::needsZoom(zoomFactor());
    if (m_localHTMLName.isEmpty()) {
        loadRemote();
        return;
    }
    m_localPage = QUrl::fromLocalFile(m_services.documentsFolder + u'/' + m_localHTMLName);
    setPage(makePage(m_localPage, false));
    // Load the online copy only after the local page, so that the local page is shown at once.
    connect(m_page.get(), &QWebEnginePage::loadFinished, this,
            [this] { QTimer::singleShot(0, this, &PXWebView::loadRemote); });
    connect(m_page.get(), &WebPage::failed, this, &PXWebView::fail);
}

void PXWebView::loadRemote() {
    if (m_remoteHTMLURL.isEmpty() || std::exchange(m_isRemoteBegun, true)) return;
    m_remotePage = makePage(QUrl(navigation::expanded(m_remoteHTMLURL, m_services.bundleIdentifier)), true);
    // Queued: do not change the page during its own signals.
    connect(
        m_remotePage.get(), &WebPage::arrived, this,
        [this] {
            if (m_remotePage) setPage(std::move(m_remotePage));
        },
        Qt::QueuedConnection);
    connect(
        m_remotePage.get(), &WebPage::failed, this,
        [this](const QString& reason) {
            if (!m_remotePage) return;
            m_remotePage.reset();
            if (!m_page) fail(reason);
        },
        Qt::QueuedConnection);
}

void PXWebView::setPage(std::unique_ptr<WebPage> page) {
    m_view->setPage(page.get());
    m_page = std::move(page);
    connect(m_page.get(), &WebPage::arrived, this, &PXWebView::pageHasLoaded);
    if (!m_page->isLoading() && m_page->url().isValid()) pageHasLoaded();
}

void PXWebView::pageHasLoaded() {
    if (const auto factor = zoomFactor(); navigation::needsZoom(factor)) {
        m_page->run(navigation::zoomScript(*factor));
        m_zoomFactor.clear();
    }
    if (engine::isDarkNow() != engine::startedDark()) applyColours();
}

void PXWebView::applyColours() {
    m_page->setBackgroundColor(palette().color(QPalette::Base));
    m_page->run(pagescripts::applyColours(engine::isDarkNow()));
}

void PXWebView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange && m_page) applyColours();
    QFrame::changeEvent(event);
}

void PXWebView::openOutside(const QUrl& address) {
    if (m_services.openInBrowser) m_services.openInBrowser(address);
}

void PXWebView::processHasEnded(const WebPage* page, int code) {
    if (page != m_page.get() && m_page) return;  // The online copy failed; keep the local page.
    fail(QStringLiteral("the page's process ended with %1").arg(code));
}

void PXWebView::fail(const QString& reason) {
    if (!std::exchange(m_hasFailed, true) && m_services.failed) m_services.failed(reason);
}

void PXWebView::showPlace(const QString& fragment) {
    m_place = fragment;
    if (!m_page) return;
    QUrl place = m_page->url();
    place.setFragment(fragment);
    m_page->load(place);
}

void PXWebView::find(const QString& text, bool backwards, const std::function<void(int)>& found) {
    if (!m_page) return;
    m_page->findText(text, backwards ? QWebEnginePage::FindBackward : QWebEnginePage::FindFlags(),
                     [found](const QWebEngineFindTextResult& result) {
                         if (found) found(result.numberOfMatches());
                     });
}

void PXWebView::magnify(double factor) {
    m_view->setZoomFactor(factor);
}

void PXWebView::showContextMenu(const QPoint& position) {
    if (!m_page) return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](QWebEnginePage::WebAction action, const QString& title) {
        menu->addAction(title, m_page.get(), [page = m_page.get(), action] { page->triggerAction(action); });
    };
    const QWebEngineContextMenuRequest* request = m_view->lastContextMenuRequest();
    if (m_page->history()->canGoBack()) add(QWebEnginePage::Back, tr("&Back"));
    if (m_page->hasSelection()) add(QWebEnginePage::Copy, tr("&Copy"));
    if (request && !request->linkUrl().isEmpty())
        add(QWebEnginePage::CopyLinkToClipboard, tr("Copy &Link Address"));
    add(QWebEnginePage::SelectAll, tr("Select &All"));
    menu->popup(m_view->mapToGlobal(position));
}
