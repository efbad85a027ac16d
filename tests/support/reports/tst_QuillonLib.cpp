#include "fakes/Logged.h"
#include "fakes/OpenedMail.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/base/Files.h"
#include "support/reports/BundleIntegrity.h"
#include "support/reports/CrashLogs.h"
#include "support/reports/HostInformation.h"
#include "support/reports/Mail.h"
#include "support/reports/QuillonLib.h"
#include "support/reports/SupportRequest.h"

namespace {

constexpr auto kAddress = "support@ravelin.example";

/// Escaping does not change the length of letters.
const QString kLong(100 * 1024, u'x');

/// The file in the folder of documents, empty: none.
QString savedFile() {
    const QDir folder(QuillonLib::shared().docDir());
    const QStringList names = folder.entryList(QDir::Files);
    return names.isEmpty() ? QString() : folder.filePath(names.first());
}

QString content(const QString& path) {
    return QString::fromUtf8(files::contents(path).value_or("unreadable"));
}

}  // namespace

class QuillonLibTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void crashReportNames() {
        QVERIFY(crashlogs::isReport("ravelin_2024.crash", "RAVELIN"));
        QVERIFY(crashlogs::isReport("R\u0101ve\u0301lin_2024.crash", "Ravel\u00EDn"));
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
        for (int day = 10; day < 32; ++day)
            written.append(home.write(QString("%1/Ravelin_2024-01-%2-000000_1.crash").arg(own).arg(day),
                                      "a\n/lib/b\n/System/Library/c\n/System/Library/d"));
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
        home.write("Frameworks/B.1.framework/B.1", QByteArray("book\0\0\0\0mark", 12));  // An alias.
        QVERIFY(QDir(folder).mkpath("C.framework"));
        QVERIFY(QFile::link("nowhere", folder + "/C.framework/C"));
        QVERIFY(!damagedFramework(folder));
        home.write("Frameworks/E.framework/E");
        QCOMPARE(damagedFramework(folder), folder + "/E.framework/E");
        home.write("Frameworks/D.framework/other");
        QCOMPARE(damagedFramework(folder), folder + "/D.framework/D");
    }

    void changesAreSavedBeforeTheEnd() {  // There may be none, as of a killed application.
        const TestHome home;
        const QuillonLib library;
        setDefaultInt("key", 1);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(library.prefsPath()), 30000);
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
        QCOMPARE(page(5, ""), "macappstore://StoreProductPage.example/?mt=12&at=ravelin");
        QCOMPARE(page(5, "StoreProductPage"), "https://AlternativetoProductPage.example/?mt=12");
        QCOMPARE(page(6, ""), "https://MacupdateProductPage.example/?mt=12");
        QCOMPARE(page(6, "MacupdateProductPage"), "https://FilehorseProductPage.example/?mt=12");
    }

    void opens() {
        TestHome home;
        const QuillonLib& library = QuillonLib::shared();
        library.openURL(4);
        QVERIFY(home.desktop.opened.isEmpty());  // There is no such page.
        library.openURL(6);
        QCOMPARE(home.desktop.opened.takeFirst(), QUrl("https://filehorse.example/ravelin/"));
        library.openURL(2);
        QCOMPARE(
            home.desktop.opened.takeFirst().toEncoded(),
            "ssupport@ravelin.example?subject=Ravelin%20Beta%20Versions&body=Hello%0AI%20would%20like%20to"
            "%20test%20upcoming%20beta%20versions%20of%20Ravelin.%0ABye%0A");
        library.openURL(1);
        const OpenedMail mail(home.desktop.opened.takeFirst());
        QCOMPARE(mail.address, kAddress);
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

    void administrators() {
        const auto is = [](const QByteArray& group, const QByteArray& member) {
            return hostrules::isAdministrator("me", [&](const char* name) {
                return name == group ? QByteArrayList{"root", member} : QByteArrayList();
            });
        };
        QVERIFY(is("admin", "me") && is("sudo", "me") && is("wheel", "me"));
        QVERIFY(!is("users", "me") && !is("sudo", "me2"));
    }

    void model() {
        const TestHome home;
        const QString blank = home.write("blank", "\n");
        const QString board = home.write("board", QByteArray("Board 4 Rev 1.2\0", 16));
        QCOMPARE(hostrules::firstModel({home.path("missing"), blank, board}), "Board 4 Rev 1.2");
        QCOMPARE(hostrules::firstModel({home.path("missing"), blank}), "");
    }

    void hosts() {
        const TestHome home;
        const auto others = [](const QString& who) { return hostrules::otherUsers(who, "me").join(' '); };
        QCOMPARE(others("me console 1\nanna console 2\nme2 console 3\nbob console 4 (me)\n"), "anna");
        QCOMPARE(others("anna tty2 09:00\nbob :1 09:00 (:1)\n"), "anna bob");
        QCOMPARE(others("a pts/0 09:00 (10.0.0.7)\nb ttyS0 09:00\nc ttys001 09:00\nd seat0 09:00\n"), "");
        const auto isTranslated = [](int error, int value) {
            return hostrules::isTranslated([&](int& read) { return read = value, error; });
        };
        QVERIFY(isTranslated(0, 1) && !isTranslated(0, 0) && !isTranslated(ENOENT, 1));
        QVERIFY(!isTranslated(EPERM, 1) && logged().value(0).endsWith("proctranslated returned 1"));
        QVERIFY(hostrules::isTranslocated("/private/AppTranslocation/1/d"));
        QCOMPARE(hostrules::diskNumber("/dev/disk12s1"), 12);
        QCOMPARE(hostrules::diskNumber("/dev/disk/by-id/usb-1s1"), -1);
        QCOMPARE(hostrules::localName("desk.office.example"), "desk.local");
        QCOMPARE(hostrules::lastUpdateAddress(
                     "<plist><dict><key>other</key><array/><key>autoInstalledUpdates</key>"
                     "<array><dict><key>url</key><string>a</string></dict><dict>"
                     "<key>url</key><string>b</string></dict></array></dict></plist>"),
                 "b");
        QCOMPARE(hostrules::storeCountryCode("https://store.ravelin.example/us/app"), "us");
        const auto isOnline = [](const QString& row) { return hostrules::hasDefaultRoute("Iface\n" + row); };
        QVERIFY(isOnline("eth0\t00000000\t010200C0\t0003\t0") && !isOnline("eth0\t00000000"));
        // A rejecting route, and one to the own network.
        QVERIFY(!isOnline("*\t00000000\t0\t0201\t0") && !isOnline("eth0\t000200C0\t0\t0001\t0"));
        QCOMPARE(PXHostInformation::ipAddress(false).count(u'.'), 3);
        QVERIFY(PXHostInformation::runningProcesses().contains(QCoreApplication::applicationFilePath()));
        QVERIFY(operatingSystemVersionString().contains(QSysInfo::kernelVersion()));
    }

    void textsAreEscaped() {
        const TestHome home;
        for (const QString text :
             {"Tom & Jerry #1?.mkv", "a=b&subject=other", "100% %41 %zz", "1 + 1;2,3:4/5", "\"<\\|>`^{}[]\"",
              "two\nlines\r\n\ttab ", "Über 電影 🎬", "it's $(x) !*~", "@support@"}) {
            mail::open({kAddress, text, text, {}});
            const OpenedMail mail(home.desktop.opened.last());
            QCOMPARE(QStringList({mail.address, mail.subject, mail.body}),
                     QStringList({kAddress, text, text}));
        }
        QCOMPARE(home.desktop.opened.size(), 9);
        QVERIFY(home.presenter.shown.isEmpty());
    }

    void aMailTooLongForALinkIsAFile() {
        TestHome home;
        const auto fitting = kLong.size() - mail::link(kAddress, "S", {}).size();
        mail::open({kAddress, "S", kLong.first(fitting), {}});
        QCOMPARE(OpenedMail(home.desktop.opened.takeFirst()).body.size(), fitting);
        QCOMPARE(savedFile(), "");
        const QString body = kLong.first(fitting - 1) + u'ß';
        mail::open({kAddress, "S", body, {}});
        const QString path = home.desktop.revealed.last();
        QVERIFY(path.endsWith("/Documents/Ravelin Support Request.txt"));
        QCOMPARE(content(path), "To: support@ravelin.example\nSubject: S\n\n" + body);
        QVERIFY(OpenedMail(home.desktop.opened.last()).body.contains(u'"' + path + u'"'));
        QVERIFY(home.presenter.shown.isEmpty());
    }

    void withoutAMailProgram_data() {
        addRows<QString, bool, bool>(  // body, has a clipboard, can save
            {{"clipboard", "short", true, true},
             {"file", "short", false, true},
             {"nothing", "short", false, false},
             {"long: file", kLong, false, true},
             {"long: only clipboard", kLong, true, false}});
    }
    void withoutAMailProgram() {
        const auto [body, hasClipboard, canSave] = row<QString, bool, bool>();
        TestHome home;
        home.desktop.opens = false;
        home.desktop.hasClipboard = hasClipboard;
        if (!canSave)
            home.write(QDir(home.path()).relativeFilePath(QuillonLib::shared().suppDir() + "/../Documents"));
        mail::open({kAddress, "S", body, {}});
        const QString text = "To: support@ravelin.example\nSubject: S\n\n" + body;
        QCOMPARE(home.presenter.shown.size(), 1);
        const Alert& told = home.presenter.shown.first();
        QVERIFY(told.message.contains(kAddress));
        QCOMPARE(home.desktop.clipboard, hasClipboard ? text : QString());
        const QString file = savedFile();
        QCOMPARE(file.isEmpty(), hasClipboard || !canSave);
        QVERIFY(file.isEmpty() || (told.message.contains(file) && content(file) == text));
        QCOMPARE(told.value.toString(), hasClipboard || canSave ? QString() : text);
    }

    void encodedBodyIsShownFirst() {
        TestHome home;
        setDefaultString("key", "ü & \"");
        const auto message = mail::withSettings(kAddress, "S", [](const QString& s) { return "> " + s; });
        home.presenter.answer.response = kAlertSecondButton;
        mail::open(message);
        QVERIFY(home.desktop.opened.isEmpty());
        home.presenter.answer.response = kAlertFirstButton;
        mail::open(message);
        QCOMPARE(home.presenter.shown.size(), 2);
        const Alert& shown = home.presenter.shown.last();
        QCOMPARE(shown.control, AlertControl::OutputText);
        const QString settings = content(QuillonLib::shared().prefsPath());
        QVERIFY(settings.contains("ü & \\\""));
        QCOMPARE(shown.value.toString(), "To: support@ravelin.example\nSubject: S\n\n> " + settings);
        const QString sent = OpenedMail(home.desktop.opened.first()).body;
        QCOMPARE(sent, "> " + QString::fromLatin1(settings.toUtf8().toBase64()));
    }
};

QTEST_GUILESS_MAIN(QuillonLibTest)
#include "tst_QuillonLib.moc"
