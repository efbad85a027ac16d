#pragma once

#include "richtext/RichText.h"

#include <QTextBrowser>

#include <functional>

/// Shows an installed rich-text document from the "documents" folder of the resources, or a newer copy from
/// the vendor's site if there is one. Loads it when it is first shown; set the properties before that, in an
/// interface file, too. A document can only use images from that folder; its links open in the user's
/// programs. Main thread only.
class PXRTFView : public QTextBrowser {
    Q_OBJECT
    /// File name of the document, with or without ".rtf".
    Q_PROPERTY(QString localRTFName MEMBER m_localRTFName)
    /// Address of the HTML copy; "$(CFBundleIdentifier)" in it is replaced by the application's bundle
    /// identifier. Empty: there is no copy.
    Q_PROPERTY(QString remoteHTMLURL MEMBER m_remoteHTMLURL)

public:
    /// Fetches a page and later calls `done` on the main thread with it, or with an empty text on failure.
    /// `done` itself checks whether the view still exists.
    using Downloader = std::function<void(const QUrl& url, std::function<void(const QString& html)> done)>;

    explicit PXRTFView(QWidget* parent = nullptr);

    /// Without a downloader, nothing is downloaded. Set it before the view is shown.
    void setDownloader(Downloader downloader) { m_downloader = std::move(downloader); }

    /// Loads images from the documents folder and nothing else.
    QVariant loadResource(int type, const QUrl& name) override;

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void loadDocument();
    void download();
    void render();
    void openLink(const QUrl& link);

    QString m_localRTFName;
    QString m_remoteHTMLURL;
    Downloader m_downloader;
    bool m_isLoaded = false;
    richtext::Document m_document;
    QString m_page;  ///< HTML shown instead of the document; empty: none.
    QUrl m_base;     ///< Base URL of relative links.
};
