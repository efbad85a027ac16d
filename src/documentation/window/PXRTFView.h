#pragma once

#include "richtext/RichText.h"

#include <QTextBrowser>

#include <functional>

/// Shows a document that ships with the application, a rich text in the "documents" folder of its resources,
/// and a newer copy from the maker's site where there is one. Reads it when it is shown first; until then its
/// properties can be set, from an interface file, too. A document brings nothing along but text and what lies
/// in that folder; its links open in the user's programs.
class PXRTFView : public QTextBrowser {
    Q_OBJECT
    /// The document's file name, with or without ".rtf".
    Q_PROPERTY(QString localRTFName MEMBER m_localRTFName)
    /// Address of an HTML page; "$(CFBundleIdentifier)" in it stands for the application's bundle identifier.
    /// Empty: there is no newer copy.
    Q_PROPERTY(QString remoteHTMLURL MEMBER m_remoteHTMLURL)

public:
    /// Fetches a page and hands it, or an empty text where that failed, to `done` on the main thread, at any
    /// later time: `done` knows whether the view is still there.
    using Downloader = std::function<void(const QUrl& url, std::function<void(const QString& html)> done)>;

    explicit PXRTFView(QWidget* parent = nullptr);

    /// Without one, nothing is downloaded. To be set before the view is shown.
    void setDownloader(Downloader downloader) { m_downloader = std::move(downloader); }

    /// Pictures from the documents folder; for everything else nothing, wherever it is.
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
    QString m_page;  ///< HTML that is shown instead of the document; empty: none.
    QUrl m_base;     ///< What relative links are relative to.
};
