#include "fakes/OpenedMail.h"
#include "fakes/TestHome.h"
#include "support/reports/BundleIntegrity.h"
#include "support/reports/CrashLogs.h"
#include "support/reports/QuillonLib.h"
#include "support/reports/SupportRequest.h"
#include "support/store/Defaults.h"

#include <QDir>
#include <QFile>
#include <QTest>

class QuillonLibTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void crashReportNames() {
        QVERIFY(crashlogs::isReport("ravelin_2024.crash", "RAVELIN"));
        QVERIFY(crashlogs::isReport(u"R\u0101ve\u0301lin_2024.crash"_qs, u"Ravel\u00EDn"_qs));
        QVERIFY(!crashlogs::isReport("Ravelin_2024.CRASH", "Ravelin"));
        QVERIFY(!crashlogs::isReport("_usr_bin_Ravelin.1000.crash", "Ravelin"));
        QVERIFY(!crashlogs::isReport("Ravelin.crash", ""));
    }

    void crashReports() {
        const TestHome home;
        const QuillonLib& library = QuillonLib::shared();
        QCOMPARE(library.appCrashLogFilenames(), QStringList());
        const QString first = home.write("system/ravelin_a.crash");
        const QString second = home.write("user/RAVELIN.crash");
        home.write("user/other.crash");
        QCOMPARE(crashlogs::paths({home.path("user"), home.path("none"), home.path("system")}, "Ravelin"),
                 (QStringList{second, first}));

        const QString own = QDir(home.path()).relativeFilePath(crashlogs::ownFolder());
        QStringList written;
        for (int day = 10; day < 32; ++day) {
            const QString name = QString("%1/Ravelin_2024-01-%2-000000_1.crash").arg(own).arg(day);
            written.append(home.write(name, "a\n/lib/b\n/System/Library/c\n/System/Library/d"));
        }
        const QString other = home.write(own + "/notes.crash");
        crashlogs::tidyUp();
        QCOMPARE(library.appCrashLogFilenames(), written.mid(2));
        QVERIFY(QFile::exists(other));
        QCOMPARE(library.appCrashLogs(), QStringList(20, "a\n/lib/b\n"));
        QVERIFY(defaultString("quillonlib_asl_lev5_pos0")->endsWith("the newest is " + written.last()));
    }

    void frameworks() {
        const TestHome home;
        const QString folder = home.path("Frameworks");
        QVERIFY(!damagedFramework(folder));
        home.write("Frameworks/B.1.framework/B.1", QByteArray("book\0\0\0\0mark", 12));  // An alias.
        QVERIFY(QDir(folder).mkpath("C.framework"));
        QVERIFY(QFile::link("nowhere", folder + "/C.framework/C"));
        QVERIFY(!damagedFramework(folder));
        home.write("Frameworks/E.framework/E");
        QCOMPARE(damagedFramework(folder), folder + "/E.framework/E");
        home.write("Frameworks/D.framework/other");
        QCOMPARE(damagedFramework(folder), folder + "/D.framework/D");
    }

    void supportRequestBody() {
        QCOMPARE(supportrequest::architecture(true, true), "ARM (Native)");
        QCOMPARE(supportrequest::architecture(false, true), "ARM (Rosetta)");
        QCOMPARE(supportrequest::body("Text", {"Model", "Intel", "Debian", true, "0123 9876"}, "Attached"),
                 "Text\n\n\n\nP.S: Hardware: Model [Intel] Software: Debian Admin: 1 UDID: 0123 9876 N/A\n"
                 "Attached\n");
    }

    void pages() {
        const auto page = [](int choice, const QString& missing) {
            return supportrequest::address(choice, "Big-Fish Max", {}, [&](const char* key) {
                return missing == key ? QString() : QString("https://%1.example/?mt=12").arg(key);
            });
        };
        QCOMPARE(page(3, "VendorProductPage"), "https://ravelin.example/big/");
        QCOMPARE(page(4, ""), "https://StoreProductPage.example/?mt=12");
        QCOMPARE(page(4, "StoreProductPage"), "");
        QCOMPARE(page(5, ""), "macappstore://StoreProductPage.example/?mt=12&at=ravelin");
        QCOMPARE(page(5, "StoreProductPage"), "https://AlternativetoProductPage.example/?mt=12");
        QCOMPARE(page(6, ""), "https://MacupdateProductPage.example/?mt=12");
        QCOMPARE(page(6, "MacupdateProductPage"), "https://FilehorseProductPage.example/?mt=12");
    }

    void opens() {
        TestHome home;
        const QuillonLib& library = QuillonLib::shared();
        for (const int choice : {0, 4, 7})
            library.openURL(choice);
        QVERIFY(home.desktop.opened.isEmpty());  // These pages do not exist.
        library.openURL(6);
        QCOMPARE(home.desktop.opened.takeFirst(), QUrl("https://filehorse.example/ravelin/"));
        library.openURL(3);
        QCOMPARE(home.desktop.opened.takeFirst(), QUrl("https://ravelin.example/ravelin/"));
        library.openURL(2);
        QCOMPARE(
            home.desktop.opened.takeFirst().toEncoded(),
            "ssupport@ravelin.example?subject=Ravelin%20Beta%20Versions&body=Hello%0AI%20would%20like%20to"
            "%20test%20upcoming%20beta%20versions%20of%20Ravelin.%0ABye%0A");
        library.openURL(1);
        const OpenedMail mail(home.desktop.opened.takeFirst());
        QCOMPARE(mail.address, "support@ravelin.example");
        QCOMPARE(mail.subject, "Ravelin v1.0.0 (1) Support Request");
        QVERIFY(mail.body.startsWith("<Insert Support Request Here>\n\n\n\nP.S: Hardware: "));
        QVERIFY(!mail.body.contains("Preferences") && home.presenter.shown.isEmpty());
        home.desktop.optionKeyIsHeld = true;
        setDefaultInt("key", 1);
        home.presenter.answer.response = kAlertFirstButton;
        library.sendSupportRequestMail("Help!");
        QVERIFY(OpenedMail(home.desktop.opened.first()).body.contains("\nPreferences (BASE64): ew"));
        QCOMPARE(home.presenter.shown.size(), 1);
    }
};

QTEST_GUILESS_MAIN(QuillonLibTest)
#include "tst_QuillonLib.moc"
