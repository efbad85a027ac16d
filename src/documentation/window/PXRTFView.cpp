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
constexpr qint64 kLargest = 8 << 20;  // Bytes; no readable document is larger.

/// With a hanging indent, a tab after the paragraph's number moves to the start of the other lines.
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

/// The file in the documents folder that `url` refers to, symbolic links resolved; empty: none.
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
        // Do not replace the document by an empty page.
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
    // Otherwise links would keep the palette's colour of the time when they were parsed.
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
    // A downloaded page must not open local files.
    const bool isFile = url.isLocalFile() && m_base.isLocalFile();
    if (isFile || QStringList{"http", "https", "mailto"}.contains(url.scheme())) sharedDesktop().openUrl(url);
}

QVariant PXRTFView::loadResource(int type, const QUrl& name) {
    const QString path = fileInDocuments(name);
    QFile file(path);
    if (!path.isEmpty() && file.open(QIODevice::ReadOnly) && file.size() <= kLargest) return file.readAll();
    // Return an empty value, or QTextDocument loads the resource itself from anywhere.
    if (type != QTextDocument::ImageResource) return QByteArray("");
    QImage unseen(1, 1, QImage::Format_ARGB32);
    unseen.fill(Qt::transparent);
    return unseen;
}
