#include "documentation/window/Documentation.h"

#include "app/AppDelegate.h"
#include "documentation/rules/DocumentationPages.h"
#include "documentation/window/WebEngine.h"
#include "support/alerts/Alert.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"
#include "support/desktop/Desktop.h"

#include <QFileInfo>

Documentation::Documentation(AppDelegate& delegate, WebEngine& engine, WindowParts parts)
    : m_engine(engine), m_parts(std::move(parts)) {
    connect(&delegate, &AppDelegate::documentationWindowRequested, this, &Documentation::open);
    connect(this, &Documentation::message, &delegate, &AppDelegate::statusMessage);
    connect(this, &Documentation::mainWindowRequested, &delegate, &AppDelegate::openMainWindow);
}

Documentation::~Documentation() {
    delete m_window;
}

void Documentation::open(int tag) {
    if (!m_window) {
        if (const QString why = m_engine.obstacle(); !why.isEmpty()) {
            openInBrowser(tag, why);
            return;
        }
        m_window = new DocumentationWindow(m_engine, m_parts);
        connect(m_window, &DocumentationWindow::mainWindowRequested, this,
                &Documentation::mainWindowRequested);
        connect(m_window, &DocumentationWindow::engineFailed, this, [this](int index, const QString& why) {
            m_window->close();
            m_window = nullptr;  // It is deleted later.
            openInBrowser(index, why);
        });
    }
    m_window->bringToFront();
    m_window->selectTab(tag);  // Last: the window closes if the engine fails.
}

void Documentation::openInBrowser(int tag, const QString& why) {
    const QList<DocumentationPage> pages = documentation::pages();
    const bool pagesExist = QFileInfo(documentation::folder()).isDir();
    logError("Error: openWindow:nibName:(%@) failed %i", QStringLiteral("DocumentationWindow"),
             pagesExist ? 1 : 0);
    logInformation("The documentation has no window here: %@", why);
    const DocumentationPage& page = pages[tag >= 0 && tag < pages.size() ? tag : 0];
    const QString path = documentation::pathOf(page);
    if (!QFileInfo(path).isReadable()) {
        logError("The page %@ of the documentation is missing", path);
        alert_apptitled(tr("This page is missing. It should be at %1.").arg(path), Texts::tr("OK"));
    } else if (sharedDesktop().openUrl(QUrl::fromLocalFile(path))) {
        Q_EMIT message(tr("The page was opened in your browser."));
    } else {
        alert_apptitled(tr("No program opens this page of the documentation. It is at %1.").arg(path),
                        Texts::tr("OK"));
    }
}
