#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>

/// Fetches a page of the vendor's site, completely or not at all. Uses http and https only, never redirects
/// from https to http, and requires a valid certificate. Keeps nothing between downloads: no cookies, cache
/// or connection; sends no passwords. Main thread only.
///
/// A truncated page is a failure. Truncation cannot be detected in a response with neither a length nor
/// chunks; chunked responses are accepted over https only.
namespace download {

struct Limits {
    /// From the start to the last byte, redirects included.
    std::chrono::milliseconds time = std::chrono::seconds(15);
    int redirects = 3;
    qint64 bytes = 1024 * 1024;
};

/// The result of a download.
struct Page {
    QUrl url;                        ///< The requested address.
    std::optional<QByteArray> body;  ///< Null: the download failed, which was logged.
    bool isAbandoned = false;        ///< The application quits: show no messages.

    /// The body decoded as UTF-8. Null if it is not valid, which is logged.
    std::optional<QString> text() const;
};

/// Returns at once; `done` is called once from the event loop. Deleting `context` cancels the download
/// without a call; `done` may delete it, too.
void start(const QUrl& url, QObject* context, std::function<void(const Page&)> done,
           const Limits& limits = {});

/// Blocks until the download has finished, in an event loop that excludes user input: windows are painted,
/// clicks and keys are queued. Quitting the application ends the wait.
Page fetch(const QUrl& url, const Limits& limits = {});

}  // namespace download

/// The text of a page, by download::fetch(); null if that fails or it is not UTF-8.
std::optional<QString> downloadWithCurl(const QUrl& url);
