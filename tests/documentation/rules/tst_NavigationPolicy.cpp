#include "documentation/rules/NavigationPolicy.h"

#include <QTest>

using namespace navigation;
using namespace std::chrono_literals;

namespace {

constexpr const char* kLocal = "file:///opt/My%20%5BApps%5D/documents/quick-start.html";
constexpr const char* kRemote = "https://maker.example/docs/quick-start.html";

}  // namespace

class NavigationPolicyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void place_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<Home>("home");
        QTest::addColumn<QString>("expected");  // As a click, then not as one: v(iew) or b(rowser).
        const Home both{QUrl(kLocal), QUrl(kRemote), false};
        const Home onlyClicks{QUrl(kLocal), QUrl(kRemote), true};
        const Home none{{}, {}, false};
        const auto row = [](const char* name, const QString& address, const Home& home,
                            const char* expected) { QTest::newRow(name) << address << home << expected; };
        row("local page", kLocal, both, "vv");
        row("place in it", QString(kLocal) + "#top", both, "vv");
        row("encoded otherwise", "file:///opt/My [Apps]/documents/quick-start.html?x", both, "vv");
        row("longer name", QString(kLocal) + ".old", both, "vv");
        row("other local page", "file:///opt/My%20%5BApps%5D/documents/subtitles.html", both, "bb");
        row("remote page", QString(kRemote) + "?from=app", both, "vv");
        row("other page there", "https://maker.example/docs/", both, "bb");
        row("without encryption", "http://maker.example/docs/quick-start.html", both, "bb");
        row("blank", "about:blank", both, "vv");
        row("no other about", "about:blank#x", both, "bb");
        row("foreign", "https://foreign.example/", both, "bb");
        row("foreign, clicks only", "https://foreign.example/", onlyClicks, "bv");
        row("local, clicks only", kLocal, onlyClicks, "vv");
        row("mail", "mailto:support@maker.example", both, "bb");
        row("no home: foreign", "https://foreign.example/", none, "bb");
        row("no home: file", kLocal, none, "bb");
        row("no home: blank", "about:blank", none, "vv");
        const Home host{{}, QUrl("https://maker.example"), false};
        row("whole host", "https://maker.example/any", host, "vv");
        row("longer host", "https://maker.example.evil.example/", host, "bb");
        row("host as a name", "https://maker.example@evil.example/", host, "bb");
    }
    void place() {
        QFETCH(const QString, address);
        QFETCH(const Home, home);
        QFETCH(const QString, expected);
        QString places;
        for (const bool isLinkClick : {true, false})
            places += placeFor(QUrl(address), isLinkClick, home) == Place::View ? 'v' : 'b';
        QCOMPARE(places, expected);
    }

    void aClickFollowsTheUsersHand() {
        QVERIFY(isLinkClick(true, 0ms));
        QVERIFY(isLinkClick(true, 1000ms));
        QVERIFY(!isLinkClick(true, 1001ms));
        QVERIFY(!isLinkClick(true, std::nullopt));
        QVERIFY(!isLinkClick(false, 0ms));
    }

    void onlyPagesAndMailLeave() {
        for (const char* address : {"https://a.example/", "http://a.example", "mailto:a@b.example"})
            QVERIFY2(mayBeOpenedOutside(QUrl(address)), address);
        for (const char* address :
             {"file:///etc/passwd", "javascript:alert(1)", "steam://run/1", "", "a.html"})
            QVERIFY2(!mayBeOpenedOutside(QUrl(address)), address);
    }

    void expansion() {
        QCOMPARE(expanded("https://a.example/$(CFBundleIdentifier)/b?$(CFBundleIdentifier)", "example.App"),
                 "https://a.example/example.App/b?example.App");
    }

    void zoom_data() {
        QTest::addColumn<std::optional<double>>("factor");
        QTest::addColumn<QString>("script");  // Empty: none is run.
        const QString script = "document.documentElement.style.zoom = \"%1\"";
        QTest::newRow("none") << std::optional<double>() << "";
        QTest::newRow("1") << std::optional(1.0) << "";
        QTest::newRow("1.00005") << std::optional(1.00005) << "";
        QTest::newRow("0.99995") << std::optional(0.99995) << "";
        QTest::newRow("1.0001") << std::optional(1.0001) << script.arg("1.0001");
        QTest::newRow("0.9999") << std::optional(0.9999) << script.arg("0.9999");
        QTest::newRow("1.5") << std::optional(1.5) << script.arg("1.5000");
        QTest::newRow("2/3") << std::optional(2.0 / 3) << script.arg("0.6667");
    }
    void zoom() {
        QFETCH(const std::optional<double>, factor);
        QFETCH(const QString, script);
        QCOMPARE(needsZoom(factor), !script.isEmpty());
        if (factor && !script.isEmpty()) QCOMPARE(zoomScript(*factor), script);
    }
};

QTEST_APPLESS_MAIN(NavigationPolicyTest)
#include "tst_NavigationPolicy.moc"
