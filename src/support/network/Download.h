#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>

/// Fetches a page of the maker's site: whole or not at all. Only http and https, never from https down to
/// http, and only from servers whose certificate is in order. Nothing is kept between two downloads: no
/// cookies, no cache, no connection; a server that asks for a password gets none. Main thread only.
///
/// A page that is cut off is a failure. It can't be told of one that comes with neither length nor chunks;
/// one in chunks is taken over https only.
namespace download {

struct Limits {
    /// From the start to the last byte, redirects included.
    std::chrono::milliseconds time = std::chrono::seconds(15);
    int redirects = 3;
    qint64 bytes = 1024 * 1024;
};

/// What came of a download.
struct Page {
    QUrl url;                        ///< The address that was asked for.
    std::optional<QByteArray> body;  ///< Nothing: it failed, which was logged.
    bool isAbandoned = false;        ///< The application quits: nobody is there any more to be told.

    /// The body as UTF-8. Nothing, and a line in the log, when it is not valid.
    std::optional<QString> text() const;
};

/// Returns at once; `done` is called later, once, in the event loop. Whoever deletes `context` calls the
/// download off and gets no call; `done` may delete it, too.
void start(const QUrl& url, QObject* context, std::function<void(const Page&)> done,
           const Limits& limits = {});

/// Returns when the page is there. Meanwhile everything goes on, windows are painted, but the user's clicks
/// and keys wait. The end of the application ends the wait.
Page fetch(const QUrl& url, const Limits& limits = {});

}  // namespace download

/// The text of a page, by download::fetch(); nothing when there is none or it is not UTF-8.
std::optional<QString> downloadWithCurl(const QUrl& url);
