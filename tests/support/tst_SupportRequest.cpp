#include "fakes/OpenedMail.h"
#include "fakes/TestHome.h"
#include "support/Defaults.h"
#include "support/QuillonLib.h"
#include "support/SupportRequest.h"

#include <QTest>

using Information = QMap<QString, QString>;

class SupportRequestTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bodies() {
        QCOMPARE(
            supportrequest::body("Text", {"Model", "Intel", "Debian", true, "0123456789 9876543210"},
                                 "Attached"),
            "Text\n\n\n\nP.S: Hardware: Model [Intel] Software: Debian Admin: 1 UDID: 0123456789 9876543210 "
            "N/A\nAttached\n");
        QVERIFY(supportrequest::body("", {}, "").endsWith(" Admin: 0 UDID:  N/A\n\n"));
        QCOMPARE(supportrequest::architecture(true, true), "ARM (Native)");
        QCOMPARE(supportrequest::architecture(false, true), "ARM (Rosetta)");
        QCOMPARE(supportrequest::architecture(false, false), "Intel");
    }

    void choices_data() {
        QTest::addColumn<int>("choice");
        QTest::addColumn<QString>("appName");
        QTest::addColumn<Information>("information");
        QTest::addColumn<QString>("address");
        const Information all{{"VendorProductPage", "https://v.example/"},
                              {"StoreProductPage", "https://s.example/app?mt=12"},
                              {"AlternativetoProductPage", "https://a.example/"},
                              {"MacupdateProductPage", "https://m.example/"},
                              {"FilehorseProductPage", "https://f.example/"}};
        const auto without = [&](const QString& key) {
            Information rest = all;
            rest.remove(key);
            return rest;
        };
        QTest::newRow("beta")
            << 2 << "Ravelin" << all
            << "smail@r.example?subject=Ravelin Beta Versions&body=Hello\nI would like to test "
               "upcoming beta versions of Ravelin.\nBye\n";
        QTest::newRow("vendor") << 3 << "Ravelin" << all << "https://v.example/";
        QTest::newRow("site") << 3 << "Ravelin Pro" << Information() << "https://ravelin.example/ravelin/";
        QTest::newRow("site, dash") << 3 << "Big-Fish Max" << Information() << "https://ravelin.example/big/";
        QTest::newRow("store") << 4 << "Ravelin" << all << "https://s.example/app?mt=12";
        QTest::newRow("no store") << 4 << "Ravelin" << without("StoreProductPage") << "";
        QTest::newRow("in store") << 5 << "Ravelin" << all << "macappstore://s.example/app?mt=12&at=ravelin";
        QTest::newRow("not in store")
            << 5 << "Ravelin" << without("StoreProductPage") << "https://a.example/";
        QTest::newRow("listed") << 6 << "Ravelin" << all << "https://m.example/";
        QTest::newRow("else") << 6 << "Ravelin" << without("MacupdateProductPage") << "https://f.example/";
        QTest::newRow("unlisted") << 6 << "Ravelin" << Information() << "";
        QTest::newRow("other") << 7 << "Ravelin" << all << "";
    }
    void choices() {
        QFETCH(int, choice);
        QFETCH(QString, appName);
        QFETCH(Information, information);
        QTEST(supportrequest::address(choice, appName, "mail@r.example",
                                      [&](const char* key) { return information.value(key); }),
              "address");
    }

    void opens() {
        TestHome home;
        const QuillonLib& library = QuillonLib::shared();
        for (const int choice : {0, 4, 7})
            library.openURL(choice);
        QVERIFY(home.desktop.opened.isEmpty());  // Of these pages there is none.
        library.openURL(6);
        QCOMPARE(home.desktop.opened.takeFirst(), QUrl("https://filehorse.example/ravelin/"));
        library.openURL(3);
        QCOMPARE(home.desktop.opened.takeFirst(), QUrl("https://ravelin.example/ravelin/"));
        library.openURL(2);
        QCOMPARE(home.desktop.opened.takeFirst().toEncoded(),
                 "ssupport@ravelin.example?subject=Ravelin%20Beta%20Versions&body=Hello%0AI%20would%20like%"
                 "20to%20test"
                 "%20upcoming%20beta%20versions%20of%20Ravelin.%0ABye%0A");
        library.openURL(1);
        const OpenedMail mail(home.desktop.opened.takeFirst());
        QCOMPARE(mail.address, "support@ravelin.example");
        QCOMPARE(mail.subject, "Ravelin v1.0.0 (1) Support Request");
        QVERIFY(mail.body.startsWith("<Insert Support Request Here>\n\n\n\nP.S: Hardware: "));
        QVERIFY(!mail.body.contains("Preferences"));
        QVERIFY(home.presenter.shown.isEmpty());
        home.desktop.optionKeyIsHeld = true;
        setDefaultInt("key", 1);
        library.sendSupportRequestMail("Help!");
        QVERIFY(OpenedMail(home.desktop.opened.first()).body.contains("\nPreferences (BASE64): ew"));
        QCOMPARE(home.presenter.shown.size(), 1);
    }
};

QTEST_GUILESS_MAIN(SupportRequestTest)
#include "tst_SupportRequest.moc"
