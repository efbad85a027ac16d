#include "fakes/Logged.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/base/Format.h"
#include "support/network/Download.h"

#include <QCoreApplication>
#include <QProcess>
#include <QScopeGuard>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>

using namespace std::chrono_literals;

/// What a server does after its response.
enum class Then { Close, Keep, Drip };

/// A loopback server that sends every client the same response, in which "PORT" is its port. A request for
/// "/3" is redirected to "/2" first, and so on down to "/0".
template <typename Base = QTcpServer>
class Server : public Base {
public:
    Server(QByteArray answer, Then then) : m_answer(std::move(answer)), m_then(then) {
        this->listen(QHostAddress::LocalHost);
        m_answer.replace("PORT", QByteArray::number(this->serverPort()));
        QObject::connect(this, &QTcpServer::pendingConnectionAvailable, this, [this] {
            QTcpSocket* socket = this->nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::disconnected, this, [this] { ++disconnected; });
            QObject::connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(*socket); });
            read(*socket);
        });
    }
    QUrl url(const QString& path = "/") const {
        const QString scheme = std::is_same_v<Base, QSslServer> ? "https" : "http";
        return makeString("%@://127.0.0.1:%i%@", scheme, this->serverPort(), path);
    }

    QByteArray requests;
    int disconnected = 0;

private:
    void read(QTcpSocket& socket) {
        const QByteArray request = socket.readAll();
        requests += request;
        if (!request.contains("\r\n\r\n")) return;
        if (const int more = request.mid(5, 1).toInt(); more > 0) {
            socket.write("HTTP/1.1 302 Found\r\nSet-Cookie: a=b\r\nContent-Length: 5\r\nLocation: /" +
                         QByteArray::number(more - 1) + "\r\n\r\nmoved");
            return;
        }
        socket.write(m_answer);
        if (m_then == Then::Close) socket.disconnectFromHost();
        if (m_then != Then::Drip) return;
        auto* drip = new QTimer(&socket);
        QObject::connect(drip, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
        drip->start(10ms);
    }

    QByteArray m_answer;
    const Then m_then;
};

class DownloadTest : public QObject {
    Q_OBJECT

    static constexpr auto kPage = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\npage";

    TestHome m_home;
    QSslConfiguration m_identity;  ///< Certificate of secure servers.
    const QSslConfiguration m_usual = QSslConfiguration::defaultConfiguration();
    QSslConfiguration m_trusting = m_usual;  ///< Trusts that certificate.

    static QByteArray movedTo(const QString& address) {
        return makeString("HTTP/1.1 301 Moved\r\nContent-Length: 0\r\nLocation: %@\r\n\r\n", address)
            .toLatin1();
    }

private Q_SLOTS:
    void initTestCase() {
        QProcess openssl;
        openssl.start("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-batch", "-subj",
                                  "/CN=test", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout",
                                  m_home.path("key"), "-out", m_home.path("certificate")});
        QVERIFY(openssl.waitForFinished());
        const auto certificates = QSslCertificate::fromPath(m_home.path("certificate"));
        QCOMPARE(certificates.size(), 1);
        QFile key(m_home.path("key"));
        QVERIFY(key.open(QIODevice::ReadOnly));
        m_identity.setLocalCertificate(certificates.first());
        m_identity.setPrivateKey(QSslKey(&key, QSsl::Rsa));
        m_trusting.addCaCertificates(certificates);
        QSslConfiguration::setDefaultConfiguration(m_trusting);
    }

    void pages_data() {
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        const QByteArray chunked = ok + "Transfer-Encoding: chunked\r\n";
        const QByteArray huge(1024 * 1024 + 1, 'x');
        const QByteArray password = "HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"x\"\r\n\r\n";
        const QString none;
        addRows<QByteArray, Then, QString, QString>(  // answer, what follows, page, what is logged
            {{"fine", kPage, Then::Keep, "page", ""},
             {"no length", ok + "\r\npage", Then::Close, "page", ""},
             {"in chunks", chunked + "\r\n2\r\npa\r\n2\r\nge\r\n0\r\n\r\n", Then::Keep, "page", ""},
             {"slow", ok + "Content-Length: 4\r\n\r\n", Then::Drip, "xxxx", ""},
             {"empty", ok + "Content-Length: 0\r\n\r\n", Then::Keep, "", ""},
             {"largest", ok + "\r\n" + huge.chopped(1), Then::Close, huge.chopped(1), ""},
             {"huge", ok + "Content-Length: 1048577\r\n\r\n", Then::Keep, none, "larger than 1048576 bytes"},
             {"huge, no length", ok + "\r\n" + huge, Then::Keep, none, "larger than"},
             {"huge, wrong length", chunked + "Content-Length: 4\r\n\r\n200000\r\n" + huge, Then::Keep, none,
              "larger than"},
             {"not UTF-8", ok + "\r\np\xE4ge", Then::Close, none, "not valid UTF-8"},
             {"cut off", ok + "Content-Length: 9\r\n\r\npage", Then::Close, none, "closed"},
             {"cut off in a chunk", chunked + "\r\n9\r\npage", Then::Close, none, "closed"},
             {"cut off after a chunk", chunked + "\r\n4\r\npage\r\n", Then::Close, none, "closed"},
             {"packed", ok + "Content-Encoding: GZIP\r\n\r\n\x1F\x8B", Then::Close, none, "encoding gzip"},
             {"not found", "HTTP/1.1 404 Not Found\r\n\r\npage", Then::Close, none, "status 404"},
             {"a part", "HTTP/1.1 206 Partial Content\r\n\r\npage", Then::Close, none, "status 206"},
             {"wants a password", password, Then::Close, none, "status 401"},
             {"moved to a file", movedTo("file:///etc/hostname"), Then::Keep, none,
              "redirected to file:///etc/hostname"},
             {"circle", movedTo("https://127.0.0.1:PORT/"), Then::Keep, none, "more than 3 redirects"},
             {"no answer", "", Then::Keep, none, "no page after 100 ms"},
             {"drips its head", ok + "X: ", Then::Drip, none, "no page after 100 ms"},
             {"drips", ok + "\r\n", Then::Drip, none, "no page after 100 ms"}});
    }
    void pages() {
        const auto [answer, then, text, reason] = row<QByteArray, Then, QString, QString>();
        const TestHome home;
        Server<QSslServer> server(answer, then);
        server.setSslConfiguration(m_identity);
        download::Limits limits;
        if (reason.startsWith("no page")) limits.time = 100ms;
        const auto result = download::fetch(server.url(), limits).text();
        const QString log = logged().join('\n');
        QCOMPARE(result.has_value(), reason.isEmpty());
        QCOMPARE(result.value_or(QString()), text);
        QCOMPARE(log.count("could not download " + server.url().toString()), reason.isEmpty() ? 0 : 1);
        QVERIFY2(log.contains(reason), qPrintable(log));
    }

    void withoutTls() {
        const TestHome home;
        const Server<> fine(kPage, Then::Keep);
        QCOMPARE(download::fetch(fine.url("/3")).text(), "page");
        const QByteArray head = fine.requests.toLower();  // As Qt sends the names from 6.8 on.
        QVERIFY(head.contains("user-agent: ravelin/1.0.0\r\n"));
        QVERIFY(head.contains("accept-encoding: identity\r\n"));
        QVERIFY(!head.contains("cookie"));
        QVERIFY(!download::fetch(fine.url("/4")).text());
        const Server<> cutOff("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\npage", Then::Close);
        // It ends at times, and more often on a busy machine, as if it were whole.
        for (int i = 0; i < 20; ++i)
            QVERIFY(!download::fetch(cutOff.url()).body);
    }

    void certificates() {
        const TestHome home;
        const Server<> open(kPage, Then::Keep);
        Server<QSslServer> secure(kPage, Then::Keep);
        Server<QSslServer> downwards(movedTo(open.url().toString()), Then::Keep);
        const Server<> upwards(movedTo(secure.url().toString()), Then::Keep);
        for (QSslServer* server : {&secure, &downwards})
            server->setSslConfiguration(m_identity);
        QCOMPARE(download::fetch(upwards.url()).text(), "page");
        QVERIFY(!download::fetch(downwards.url()).body);
        QVERIFY(!downwards.requests.isEmpty());
        QVERIFY(open.requests.isEmpty());

        secure.requests.clear();
        QSslConfiguration::setDefaultConfiguration(m_usual);
        const auto restore = qScopeGuard([&] { QSslConfiguration::setDefaultConfiguration(m_trusting); });
        QVERIFY(!download::fetch(secure.url()).body);  // Its certificate is not trusted.
        QVERIFY(secure.requests.isEmpty());
    }

    void addresses() {
        const TestHome home;
        auto gone = std::make_unique<Server<>>(kPage, Then::Keep);
        QUrl refused = gone->url();
        refused.setUserInfo("user:secret");
        gone.reset();
        const QUrl file = QUrl::fromLocalFile(home.write("page", "page"));
        for (const QUrl& url :
             {file, refused, QUrl("ftp://127.0.0.1/"), QUrl(), QUrl("http:///page"), QUrl("http://[/")})
            QVERIFY2(!download::fetch(url).body, qPrintable(url.toString()));
        QCOMPARE(logged().size(), 6);
        QVERIFY(!logged().join(' ').contains("secret"));
    }

    void eventsAreHandledMeanwhile() {
        auto server = std::make_unique<Server<>>(QByteArray(), Then::Keep);
        QTimer timer;
        int ticks = 0;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (++ticks == 3) server.reset();  // This ends the download.
        });
        timer.start(1ms);
        QVERIFY(!download::fetch(server->url()).body);
        QVERIFY(ticks >= 3);
    }

    void quittingEndsTheWait() {
        const TestHome home;
        const Server<> server({}, Then::Keep);
        download::Page page;
        QTimer::singleShot(0, qApp, [&] { page = download::fetch(server.url()); });
        QTimer::singleShot(50ms, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();
        QVERIFY(page.isAbandoned);
        QVERIFY(!page.text());
        QCOMPARE(logged(), QStringList());
    }

    void cancelled() {
        const Server<> silent({}, Then::Keep);
        const Server<> server(kPage, Then::Keep);
        auto context = std::make_unique<QObject>();
        int calls = 0;
        download::start(silent.url(), context.get(), [&](const download::Page&) { ++calls; });
        QTRY_VERIFY(!silent.requests.isEmpty());
        context.reset();
        QTRY_COMPARE(silent.disconnected, 1);
        context = std::make_unique<QObject>();
        for (int i = 0; i < 2; ++i) {
            download::start(server.url(), context.get(), [&](const download::Page&) {
                ++calls;
                context.reset();  // The first callback cancels the other download.
            });
        }
        QTRY_VERIFY(!context);
        QTRY_COMPARE(server.disconnected, 2);
        QCOMPARE(calls, 1);
    }
};

QTEST_GUILESS_MAIN(DownloadTest)
#include "tst_Download.moc"
