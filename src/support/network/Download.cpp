#include "support/network/Download.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Log.h"
#include "support/base/Text.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <memory>

namespace download {

namespace {

void logFailure(const QUrl& url, const QString& reason) {
    // Some reasons contain text from the server.
    constexpr qsizetype kLongestReason = 200;  // characters
    logError("Error: could not download %@: %@", url.toDisplayString(QUrl::RemoveUserInfo),
             text::clamp(text::strippedOfNewlines(reason), kLongestReason));
}

bool isFetchable(const QUrl& url) {
    return url.isValid() && !url.host().isEmpty() && (url.scheme() == u"https" || url.scheme() == u"http");
}

QNetworkRequest requestFor(const QUrl& url) {
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      makeString("%@/%@", ApplicationInfo::name(), ApplicationInfo::version()));
    // Without compression, the length limits the page's size, and truncation is detected.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Follow redirects ourselves: Qt sometimes mixes the headers of successive responses.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    // Also bypasses the caches of proxies.
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return request;
}

bool mayRedirect(const QUrl& from, const QUrl& to) {
    return isFetchable(to) && (from.scheme() != u"https" || to.scheme() == u"https");
}

bool isChunked(const QNetworkReply& reply) {
    return reply.hasRawHeader("Transfer-Encoding");
}

QString tooLarge(const Limits& limits) {
    return makeString("larger than %li bytes", limits.bytes);
}

/// Why the response is refused by its headers; empty if it is accepted.
QString refusal(const QNetworkReply& reply, const Limits& limits) {
    constexpr int kFirstGood = 200;
    constexpr int kLastGood = 299;
    constexpr int kPartOnly = 206;
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status < kFirstGood || status > kLastGood || status == kPartOnly)
        return makeString("the server answered with status %i", status);
    const QString encoding = QString::fromLatin1(reply.rawHeader("Content-Encoding")).toLower();
    if (!encoding.isEmpty() && encoding != u"identity")
        return makeString("sent in the encoding %@, which was not asked for", encoding);
    // Without TLS, Qt sometimes treats a broken connection as the last chunk, if the whole response arrives
    // before Qt has registered that its request was sent.
    if (isChunked(reply) && reply.url().scheme() == u"http")
        return "sent in chunks without TLS, so that its end can't be told";
    if (reply.header(QNetworkRequest::ContentLengthHeader).toLongLong() > limits.bytes)
        return tooLarge(limits);
    return {};
}

/// One download. Owned by its context; deletes itself when it has finished.
class Fetching : public QObject {
public:
    Fetching(const QUrl& url, QObject* context, std::function<void(const Page&)> done, const Limits& limits)
        : QObject(context), m_page{url, {}}, m_done(std::move(done)), m_limits(limits) {
        if (!isFetchable(url)) {
            fail("not an address of the web");
            return;
        }
        QTimer::singleShot(limits.time, Qt::PreciseTimer, this,
                           [this] { fail(makeString("no page after %li ms", m_limits.time.count())); });
        m_manager = std::make_unique<QNetworkAccessManager>();
        get(url);
    }

private:
    void get(const QUrl& url) {
        m_reply = m_manager->get(requestFor(url));
        // Limits the memory if the server sends faster than we read.
        m_reply->setReadBufferSize(m_limits.bytes);
        connect(m_reply, &QNetworkReply::metaDataChanged, this, &Fetching::look);
        connect(m_reply, &QNetworkReply::readyRead, this, &Fetching::readBody);
        connect(m_reply, &QNetworkReply::finished, this, &Fetching::finish);
    }

    void look() {
        const QVariant target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute);
        if (target.isValid()) {
            follow(m_reply->url().resolved(target.toUrl()));
        } else if (const QString reason = refusal(*m_reply, m_limits); !reason.isEmpty()) {
            fail(reason);
        }
    }

    void follow(const QUrl& target) {
        if (!mayRedirect(m_reply->url(), target)) {
            fail(makeString("redirected to %@", target.toDisplayString(QUrl::RemoveUserInfo)));
        } else if (++m_redirects > m_limits.redirects) {
            fail(makeString("more than %i redirects", m_limits.redirects));
        } else {
            m_reply->disconnect(this);
            m_reply->deleteLater();
            get(target);
        }
    }

    void readBody() {
        m_body += m_reply->readAll();
        if (m_body.size() > m_limits.bytes) fail(tooLarge(m_limits));
    }

    void finish() {
        readBody();
        if (m_isDone) return;
        const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
        if (m_reply->error() != QNetworkReply::NoError) {
            fail(m_reply->errorString());
        } else if (const QString reason = refusal(*m_reply, m_limits); !reason.isEmpty()) {
            fail(reason);
        } else if (length.isValid() && !isChunked(*m_reply) && length.toLongLong() != m_body.size()) {
            fail(makeString("cut off after %li bytes", m_body.size()));
        } else {
            m_page.body = m_body;
            end();
        }
    }

    void fail(const QString& reason) {
        if (m_isDone) return;
        logFailure(m_page.url, reason);
        end();
    }

    /// The callback may delete this, and the reply must not be deleted while it emits a signal.
    void end() {
        m_isDone = true;
        if (m_reply) m_reply->disconnect(this);
        QMetaObject::invokeMethod(
            this,
            [this] {
                const Page page = m_page;
                const auto done = std::move(m_done);
                delete this;
                done(page);
            },
            Qt::QueuedConnection);
    }

    Page m_page;
    std::function<void(const Page&)> m_done;
    const Limits m_limits;
    QByteArray m_body;
    int m_redirects = 0;
    bool m_isDone = false;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    QNetworkReply* m_reply = nullptr;  ///< Owned by its manager.
};

}  // namespace

std::optional<QString> Page::text() const {
    if (!body) return std::nullopt;
    auto result = text::fromUtf8(*body);
    if (!result) logFailure(url, "not valid UTF-8");
    return result;
}

void start(const QUrl& url, QObject* context, std::function<void(const Page&)> done, const Limits& limits) {
    new Fetching(url, context, std::move(done), limits);
}

Page fetch(const QUrl& url, const Limits& limits) {
    Page result{url, {}, true};
    QEventLoop loop;
    start(
        url, &loop,
        [&](const Page& page) {
            result = page;
            loop.quit();
        },
        limits);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    return result;
}

}  // namespace download

std::optional<QString> downloadWithCurl(const QUrl& url) {
    return download::fetch(url).text();
}
