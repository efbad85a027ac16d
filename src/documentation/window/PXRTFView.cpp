#include "documentation/window/PXRTFView.h"

#include "support/base/Log.h"
#include "support/desktop/Desktop.h"
#include "support/reports/QuillonLib.h"

#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QFontInfo>
#include <QImage>
#include <QPointer>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocumentFragment>

namespace {

constexpr int kMargin = 16;
constexpr int kListIndent = 24;
constexpr qint64 kLargest = 8 << 20;  // Bytes; no text that somebody reads has more.

/// Where the first line hangs out, a tab behind its number leads to where the other lines begin.
void setTabsOfHangingLines(const QTextDocument& document) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        if (format.textIndent() >= 0) continue;
        format.setTabPositions({QTextOption::Tab(-format.textIndent(), QTextOption::LeftTab)});
        QTextCursor(block).setBlockFormat(format);
    }
}

QString documentsFolder() {
    return QuillonLib::shared().resDir() + "/documents";
}

std::optional<richtext::Document> readDocument(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kLargest) return std::nullopt;
    return richtext::read(file.read(kLargest));
}

/// The file in the documents folder that `url` names, wherever links lead; empty: none.
QString fileInDocuments(const QUrl& url) {
    const QUrl folder = QUrl::fromLocalFile(documentsFolder() + '/');
    const QString path = QFileInfo(folder.resolved(url).toLocalFile()).canonicalFilePath();
    const QString allowed = QFileInfo(documentsFolder()).canonicalFilePath() + '/';
    return path.startsWith(allowed) ? path : QString();
}

}  // namespace

PXRTFView::PXRTFView(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    document()->setDocumentMargin(kMargin);
    document()->setIndentWidth(kListIndent);
    connect(this, &QTextBrowser::anchorClicked, this, &PXRTFView::openLink);
}

void PXRTFView::showEvent(QShowEvent* event) {
    if (!m_isLoaded) {
        m_isLoaded = true;
        if (m_localRTFName.isEmpty()) {
            logError("Error: localRTFName not set on PXRTFView");
        } else {
            loadDocument();
            download();
        }
    }
    QTextBrowser::showEvent(event);
}

void PXRTFView::loadDocument() {
    const bool hasEnding = m_localRTFName.endsWith(".rtf", Qt::CaseInsensitive);
    const QString path = documentsFolder() + '/' + m_localRTFName + (hasEnding ? "" : ".rtf");
    m_base = QUrl::fromLocalFile(path);
    if (auto document = readDocument(path)) {
        m_document = std::move(*document);
    } else {
        logError("The document '%@' is missing or no rich text.", path);
        const QString sentence =
            tr("The document “%1” cannot be shown: it is missing or damaged.").arg(m_localRTFName);
        m_page = "<p>" + sentence.toHtmlEscaped() + "</p>";
    }
    render();
}

void PXRTFView::download() {
    if (m_remoteHTMLURL.isEmpty() || !m_downloader) return;
    QString address = m_remoteHTMLURL;
    const QUrl url(address.replace("$(CFBundleIdentifier)", QuillonLib::shared().appBundleIdentifier()));
    m_downloader(url, [view = QPointer(this), url](const QString& html) {
        // A page without a word would only take away what can be read.
        if (!view || QTextDocumentFragment::fromHtml(html).toPlainText().trimmed().isEmpty()) return;
        view->m_page = html;
        view->m_base = url;
        view->render();
    });
}

void PXRTFView::render() {
    const richtext::HtmlLook look{.bodyPoints = QFontInfo(font()).pointSizeF(),
                                  .background = palette().color(QPalette::Base).rgb() & RGB_MASK};
    const int position = verticalScrollBar()->value();
    // Links would be in the colour of the application's palette when they were read.
    document()->setDefaultStyleSheet("a { color: " + palette().color(QPalette::Link).name() + " }");
    setHtml(m_page.isEmpty() ? richtext::toHtml(m_document, look) : m_page);
    setTabsOfHangingLines(*document());
    verticalScrollBar()->setValue(position);
}

void PXRTFView::changeEvent(QEvent* event) {
    QTextBrowser::changeEvent(event);
    const bool isOfLook = event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange;
    if (m_isLoaded && isOfLook) render();
}

void PXRTFView::openLink(const QUrl& link) {
    if (link.isRelative() && link.path().isEmpty()) return scrollToAnchor(link.fragment());
    const QUrl url = m_base.resolved(link);
    // A page from elsewhere has no business with the files of this machine.
    const bool isFile = url.isLocalFile() && m_base.isLocalFile();
    if (isFile || QStringList{"http", "https", "mailto"}.contains(url.scheme())) sharedDesktop().openUrl(url);
}

QVariant PXRTFView::loadResource(int type, const QUrl& name) {
    const QString path = fileInDocuments(name);
    QFile file(path);
    if (!path.isEmpty() && file.open(QIODevice::ReadOnly) && file.size() <= kLargest) return file.readAll();
    // What it is not given, QTextDocument itself looks for, wherever that is.
    if (type != QTextDocument::ImageResource) return QByteArray("");
    QImage unseen(1, 1, QImage::Format_ARGB32);
    unseen.fill(Qt::transparent);
    return unseen;
}
