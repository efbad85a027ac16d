// Tests the real plugin with the real engine, loaded as in the application.
#include "documentation/rules/WebViewFactory.h"
#include "documentation/window/WebEngine.h"
#include "documentation/window/WebEngineCheck.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"

#include <QDirIterator>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtWidgets>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
// Suppresses findings in the engine's own code.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" const char* __asan_default_options() {
    return "new_delete_type_mismatch=0";
}
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libQt6WebEngineCore\nleak:libfontconfig\nleak:libudev\n";
}
// NOLINTEND(bugprone-reserved-identifier)
#endif

namespace {

constexpr int kLimit = 60000;  // ms

/// The page's title reports its zoom, whether it can scroll, and its colour.
constexpr const char* kReportingPage = R"html(<!doctype html>
<meta name=color-scheme content="light dark">
<style>:root { color: rgb(1, 1, 1) } @media (prefers-color-scheme: dark) { :root { color: rgb(2, 2, 2) } }</style>
<script>
setInterval(() => {
    const style = getComputedStyle(document.documentElement);
    document.title = [document.documentElement.style.zoom || 'none', style.overflow, style.color].join(' ');
}, 10);
</script>)html";

/// Serves the prepared page of each address, and status 404 with a page for all others.
class Server : public QTcpServer {
public:
    Server() {
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(*socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        });
        if (!listen(QHostAddress::LocalHost)) qFatal("cannot listen");
    }
    QString address(const QString& path) const {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path);
    }

    QHash<QString, QByteArray> pages;
    QStringList asked;

private:
    void answer(QTcpSocket& socket) {
        const QString path = QString::fromUtf8(socket.readAll().split(' ').value(1));
        asked.append(path);
        const QByteArray page = pages.value(path, "<title>Not found</title>");
        socket.write("HTTP/1.1 " + QByteArray(pages.contains(path) ? "200 OK" : "404 Not Found") +
                     "\r\nContent-Type: text/html\r\nConnection: close\r\n\r\n" + page);
        socket.disconnectFromHost();
    }
};

using Properties = std::initializer_list<std::pair<const char*, QVariant>>;

/// A view in its own window.
class Window : public QWidget {
public:
    Window(WebViewFactory& factory, const QString& documents, Properties properties) {
        WebViewServices services;
        services.documentsFolder = documents;
        services.bundleIdentifier = "example.test";
        services.openInBrowser = [this](const QUrl& address) { outside.append(address.toString()); };
        services.failed = [this](const QString& reason) { failures.append(reason); };
        view = factory.makeView(services, this);
        resize(400, 300);
        view->widget()->resize(size());
        for (const auto& [name, value] : properties) {
            if (view->widget()->metaObject()->indexOfProperty(name) < 0) qFatal("no property %s", name);
            view->widget()->setProperty(name, value);
        }
        show();
    }

    QWidget* engineView() const {
        for (QWidget* child : view->widget()->findChildren<QWidget*>()) {
            if (child->inherits("QWebEngineView")) return child;
        }
        return nullptr;
    }
    QString title() const { return engineView()->property("title").toString(); }
    /// Clicks repeatedly until the page has drawn the clicked element.
    bool click() const {
        // A click too soon after the previous one would stop the navigation that it started.
        constexpr int kPatience = 500;
        for (int waited = 0; outside.isEmpty() && waited < kLimit; waited += kPatience) {
            QTest::mouseClick(engineView()->focusProxy(), Qt::LeftButton, {}, QPoint(200, 150));
            if (QTest::qWaitFor([this] { return !outside.isEmpty(); }, kPatience)) return true;
        }
        return false;
    }

    WebView* view = nullptr;
    QStringList outside;
    QStringList failures;
};

}  // namespace

class PXWebViewTest : public QObject {
    Q_OBJECT

public:
    static void initMain() {
        if (::geteuid() == 0) qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    }

private:
    QTemporaryDir m_userHome;
    PluginWebEngine m_engine;
    WebViewFactory* m_factory = nullptr;
    std::unique_ptr<TestHome> m_home;
    std::unique_ptr<Server> m_server;

    std::unique_ptr<Window> show(Properties properties) const {
        return std::make_unique<Window>(*m_factory, m_home->path("documents"), properties);
    }
    void writeLocal(const QByteArray& body) const {
        m_home->write("documents/local page.html", "<!doctype html><title>Local</title>" + body);
    }

private Q_SLOTS:
    void initTestCase() {
        for (const char* name : {"HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
            qputenv(name, m_userHome.path().toUtf8());
        m_home = std::make_unique<TestHome>();
        QString why;
        m_factory = m_engine.factory(why);
        QVERIFY2(m_factory, qPrintable(why));
    }
    void init() {
        m_home = std::make_unique<TestHome>();
        m_server = std::make_unique<Server>();
        QApplication::setPalette({});
    }

    /// Runs last.
    void cleanupTestCase() {
        QDirIterator files(m_userHome.path(), QDir::Files, QDirIterator::Subdirectories);
        QVERIFY2(!files.hasNext(), qPrintable(files.next()));
    }

    void engineObstacles_data() {
        addRows<QByteArray, QByteArray, QString>(
            {{"nothing", "UNRELATED", "1", ""},
             {"no program", "QTWEBENGINEPROCESS_PATH", "/nowhere",
              "QtWebEngineProcess of Qt WebEngine is not installed."},
             {"no resources", "QTWEBENGINE_RESOURCES_PATH", "/nowhere",
              "qtwebengine_resources.pak of Qt WebEngine is not installed."},
             {"root", "QTWEBENGINE_DISABLE_SANDBOX", "0",
              ::geteuid() == 0 ? "Qt WebEngine does not run as root." : ""}});
    }
    void engineObstacles() {
        const auto [variable, value, expected] = row<QByteArray, QByteArray, QString>();
        const QByteArray before = qgetenv(variable);
        qputenv(variable, value);
        const QString obstacle = webengine::obstacle();
        before.isNull() ? qunsetenv(variable) : qputenv(variable, before);
        QCOMPARE(obstacle, expected);
    }
    void aUserNeedsASystemThatAllowsTheSandbox() {
        if (::geteuid() != 0) QSKIP("the rows above have tried it");
        const int allowed = QProcess::execute("setpriv", {"--reuid=65534", "unshare", "-Urpn", "true"});
        const pid_t user = ::fork();
        if (user == 0) {
            qunsetenv("QTWEBENGINE_DISABLE_SANDBOX");
            const bool isUser = ::setuid(65534) == 0 && ::prctl(PR_SET_DUMPABLE, 1) == 0;
            ::_exit(isUser && webengine::obstacle().isEmpty() ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(::waitpid(user, &status, 0), user);
        QCOMPARE(WEXITSTATUS(status) == 0, allowed == 0);
    }
    void limitedAddressSpaceIsAnObstacle() {
        rlimit before{};
        ::getrlimit(RLIMIT_AS, &before);
        rlimit limited = before;
        limited.rlim_cur = RLIM_INFINITY - 1;
        QCOMPARE(::setrlimit(RLIMIT_AS, &limited), 0);
        const QString obstacle = webengine::obstacle();
        QCOMPARE(::setrlimit(RLIMIT_AS, &before), 0);
        QCOMPARE(obstacle, "The address space of this process is limited.");
    }

    void onlineCopyReplacesTheLocalPage() {
        writeLocal("one word, two words");
        m_server->pages["/example.test/page.html"] = "<title>Remote</title>another word";
        const auto window = show({{"localHTMLName", "local page.html"},
                                  {"remoteHTMLURL", m_server->address("/$(CFBundleIdentifier)/page.html")}});
        QStringList titles;
        connect(window->engineView(), SIGNAL(titleChanged(QString)), window.get(),
                SLOT(setWindowTitle(QString)));
        connect(window.get(), &QWidget::windowTitleChanged, this,
                [&](const QString& title) { titles.append(title); });
        QTRY_COMPARE_WITH_TIMEOUT(window->title(), "Remote", kLimit);
        QVERIFY(titles.contains("Local"));
        QCOMPARE(window->failures + window->outside, QStringList());
        int found = -1;
        window->view->find("word", false, [&](int places) { found = places; });
        QTRY_COMPARE_WITH_TIMEOUT(found, 1, kLimit);
    }

    void theLocalPageStays() {
        writeLocal("");
        m_server->pages["/page.html"] = "<title>Remote</title>";
        // No server, no such host, and no such page.
        for (const QString& remote :
             {QString("http://127.0.0.1:1/page.html"), QString("http://nowhere.invalid/page.html"),
              m_server->address("/none")}) {
            const auto window = show({{"localHTMLName", "local page.html"}, {"remoteHTMLURL", remote}});
            QTRY_COMPARE_WITH_TIMEOUT(window->title(), "Local", kLimit);
            // When a second view has loaded its page, the first one would have finished, too.
            const auto second = show({{"remoteHTMLURL", m_server->address("/page.html")}});
            QTRY_COMPARE_WITH_TIMEOUT(second->title(), "Remote", kLimit);
            QCOMPARE(window->title(), "Local");
            QCOMPARE(window->failures + window->outside, QStringList());
        }
    }

    void theContextMenuCopies() {
        writeLocal("some words");
        const auto window = show({{"localHTMLName", "local page.html"}});
        QTRY_COMPARE_WITH_TIMEOUT(window->title(), "Local", kLimit);
        const auto choose = [&](const QString& title) {
            Q_EMIT window->engineView()->customContextMenuRequested({9, 9});
            QWidget* menu = QApplication::activePopupWidget();
            const auto actions = menu->actions();
            const auto found = std::ranges::find(actions, title, &QAction::text);
            if (found != actions.end()) (*found)->trigger();
            menu->close();
            return found != actions.end();
        };
        QVERIFY(!choose("&Copy"));  // Nothing is selected.
        QVERIFY(choose("Select &All"));
        QTRY_VERIFY_WITH_TIMEOUT(choose("&Copy"), kLimit);
        QTRY_COMPARE_WITH_TIMEOUT(QApplication::clipboard()->text().trimmed(), "some words", kLimit);
    }

    void otherAddressesLeaveTheView_data() {
        addRows<QString, QString>(
            {{"foreign page", "href='https://foreign.example/a%20b?c'", "https://foreign.example/a b?c"},
             {"in a new window", "target=_blank href='https://foreign.example/'", "https://foreign.example/"},
             {"another local page", "href='other.html#place'", "file://%1/other.html#place"}});
    }
    void otherAddressesLeaveTheView() {
        const auto [link, outside] = row<QString, QString>();
        for (const bool onlyClicks : {false, true}) {
            writeLocal("<a style='position: fixed; inset: 0; font-size: 99px' " + link.toUtf8() + ">go</a>");
            m_home->write("documents/other.html", "<title>Other</title>");
            const auto window =
                show({{"localHTMLName", "local page.html"}, {"openOnlyClicksInBrowser", onlyClicks}});
            QTRY_COMPARE_WITH_TIMEOUT(window->title(), "Local", kLimit);
            QVERIFY(window->click());
            QCOMPARE(window->outside.first(), QString(outside).replace("%1", m_home->path("documents")));
            QCOMPARE(window->title(), "Local");
        }
    }

    void scriptsLeadElsewhereInsideTheViewOnlyWhereAllowed() {
        Server elsewhere;
        elsewhere.pages["/"] = "<title>Elsewhere</title>";
        m_server->pages["/page.html"] =
            "<title>Remote</title><script>location = '" + elsewhere.address("/").toUtf8() + "'</script>";
        for (const bool onlyClicks : {false, true}) {
            const auto window = show({{"remoteHTMLURL", m_server->address("/page.html")},
                                      {"openOnlyClicksInBrowser", onlyClicks}});
            if (onlyClicks) {
                QTRY_COMPARE_WITH_TIMEOUT(window->title(), "Elsewhere", kLimit);
                QCOMPARE(window->outside, QStringList());
            } else {
                QTRY_COMPARE_WITH_TIMEOUT(window->outside, QStringList(elsewhere.address("/")), kLimit);
                QCOMPARE(elsewhere.asked, QStringList());
            }
        }
    }

    void scriptIsAClickOnlyAfterInput_data() {
        addRows<QString, int, bool>({{"by itself", "load", 100, false},
                                     {"mouse", "mousedown", 0, true},
                                     {"key", "keydown", 0, true},
                                     {"long after the mouse", "mousedown", 3000, false}});
    }
    /// The engine reports a script after loading as a link click.
    void scriptIsAClickOnlyAfterInput() {
        const auto [starts, milliseconds, leaves] = row<QString, int, bool>();
        Server elsewhere;
        elsewhere.pages["/"] = "<title>Elsewhere</title>";
        m_server->pages["/page.html"] =
            QStringLiteral(
                "<title>Remote</title><body><script>"
                "addEventListener('%1', () => { document.title = 'Started';"
                "setTimeout(() => location.href = '%2', %3); }, { once: true })</script>")
                .arg(starts, elsewhere.address("/"), QString::number(milliseconds))
                .toUtf8();
        const auto window =
            show({{"remoteHTMLURL", m_server->address("/page.html")}, {"openOnlyClicksInBrowser", true}});
        QTRY_VERIFY_WITH_TIMEOUT(window->title() == u"Remote" || starts == u"load", kLimit);
        // The page does not accept events at once.
        const auto isStarted = [&] { return starts == u"load" || window->title() != u"Remote"; };
        for (int tries = 0; !isStarted() && tries < kLimit / 100; ++tries) {
            QWidget* target = window->engineView()->focusProxy();
            starts == u"keydown" ? QTest::keyClick(target, Qt::Key_A)
                                 : QTest::mouseClick(target, Qt::LeftButton, {}, QPoint(200, 150));
            std::ignore = QTest::qWaitFor(isStarted, 100);
        }
        QTRY_VERIFY_WITH_TIMEOUT(!window->outside.isEmpty() || window->title() == u"Elsewhere", kLimit);
        QCOMPARE(window->outside, leaves ? QStringList(elsewhere.address("/")) : QStringList());
    }

    void zoomAndScrolling_data() {
        addRows<QVariant, bool, QString, QString>(
            {{"neither", QVariant(), false, "none visible", "none visible"},
             {"zoomed once", 1.25, false, "1.25 hidden", "none hidden"},
             {"not scrolled", QVariant(), true, "none hidden", "none hidden"}});
    }
    void zoomAndScrolling() {
        const auto [factor, disableScrolling, first, second] = row<QVariant, bool, QString, QString>();
        m_server->pages["/page.html"] = QByteArray(kReportingPage) +
                                        "<script>setInterval(async () => { if ((await fetch('/go')).ok) "
                                        "location.search = 'second' }, 50)</script>";
        m_server->pages["/page.html?second"] = kReportingPage;
        const auto window = show({{"remoteHTMLURL", m_server->address("/page.html")},
                                  {"zoomFactor", factor},
                                  {"disableScrolling", disableScrolling}});
        QTRY_VERIFY_WITH_TIMEOUT(window->title().startsWith(first), kLimit);
        m_server->pages["/go"] = "now";
        QTRY_VERIFY_WITH_TIMEOUT(m_server->asked.contains("/page.html?second"), kLimit);
        QTRY_VERIFY_WITH_TIMEOUT(window->title().startsWith(second), kLimit);
    }

    void aPageFollowsThePalette() {
        m_server->pages["/page.html"] = kReportingPage;
        const auto window = show({{"remoteHTMLURL", m_server->address("/page.html")}});
        QTRY_VERIFY_WITH_TIMEOUT(window->title().endsWith("rgb(1, 1, 1)"), kLimit);
        QApplication::setPalette(QPalette(Qt::darkGray, Qt::black));
        QTRY_VERIFY_WITH_TIMEOUT(window->title().endsWith("rgb(2, 2, 2)"), kLimit);
        QApplication::setPalette({});
        QTRY_VERIFY_WITH_TIMEOUT(window->title().endsWith("rgb(1, 1, 1)"), kLimit);
    }

    void missingPageIsReportedOnce() {
        const auto window = show({{"localHTMLName", "missing.html"}});
        QTRY_COMPARE_WITH_TIMEOUT(window->failures.size(), 1, kLimit);
    }
};

QTEST_MAIN(PXWebViewTest)
#include "tst_PXWebView.moc"
