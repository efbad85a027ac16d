#include "documentation/rules/NavigationPolicy.h"
#include "fakes/Table.h"

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
        // Expected as a click, then not as one: v(iew) or b(rowser).
        const Home both{QUrl(kLocal), QUrl(kRemote), false};
        const Home onlyClicks{QUrl(kLocal), QUrl(kRemote), true};
        const Home none{{}, {}, false};
        const Home host{{}, QUrl("https://maker.example"), false};
        addRows<QString, Home, QString>(
            {{"local page", kLocal, both, "vv"},
             {"place in it", QString(kLocal) + "#top", both, "vv"},
             {"encoded otherwise", "file:///opt/My [Apps]/documents/quick-start.html?x", both, "vv"},
             {"longer name", QString(kLocal) + ".old", both, "vv"},
             {"other local page", "file:///opt/My%20%5BApps%5D/documents/subtitles.html", both, "bb"},
             {"remote page", QString(kRemote) + "?from=app", both, "vv"},
             {"other page there", "https://maker.example/docs/", both, "bb"},
             {"without encryption", "http://maker.example/docs/quick-start.html", both, "bb"},
             {"blank", "about:blank", both, "vv"},
             {"no other about", "about:blank#x", both, "bb"},
             {"foreign", "https://foreign.example/", both, "bb"},
             {"foreign, clicks only", "https://foreign.example/", onlyClicks, "bv"},
             {"local, clicks only", kLocal, onlyClicks, "vv"},
             {"mail", "mailto:support@maker.example", both, "bb"},
             {"no home: foreign", "https://foreign.example/", none, "bb"},
             {"no home: file", kLocal, none, "bb"},
             {"no home: blank", "about:blank", none, "vv"},
             {"whole host", "https://maker.example/any", host, "vv"},
             {"longer host", "https://maker.example.evil.example/", host, "bb"},
             {"host as a name", "https://maker.example@evil.example/", host, "bb"}});
    }
    void place() {
        const auto [address, home, expected] = row<QString, Home, QString>();
        QString places;
        for (const bool isLinkClick : {true, false})
            places += placeFor(QUrl(address), isLinkClick, home) == Place::View ? 'v' : 'b';
        QCOMPARE(places, expected);
    }

    void clickNeedsRecentInput() {
        QVERIFY(isLinkClick(true, 1000ms) && !isLinkClick(true, 1001ms));
        QVERIFY(!isLinkClick(true, std::nullopt) && !isLinkClick(false, 0ms));
    }

    void onlyPagesAndMailOpenOutside() {
        for (const char* address : {"https://a.example/", "http://a.example", "mailto:a@b.example"})
            QVERIFY2(mayBeOpenedOutside(QUrl(address)), address);
        for (const char* address :
             {"file:///etc/passwd", "javascript:alert(1)", "steam://run/1", "", "a.html"})
            QVERIFY2(!mayBeOpenedOutside(QUrl(address)), address);
    }

    void zoom() {
        QVERIFY(!needsZoom(std::nullopt) && !needsZoom(1.00005) && !needsZoom(0.99995));
        for (const auto& [factor, text] :
             {std::pair(1.0001, "1.0001"), {0.9999, "0.9999"}, {1.5, "1.5000"}, {2.0 / 3, "0.6667"}}) {
            QVERIFY(needsZoom(factor));
            QCOMPARE(zoomScript(factor), QString("document.documentElement.style.zoom = \"%1\"").arg(text));
        }
    }
};

QTEST_APPLESS_MAIN(NavigationPolicyTest)
#include "tst_NavigationPolicy.moc"
