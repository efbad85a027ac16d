#include "fakes/TestHome.h"
#include "support/base/Format.h"
#include "support/reports/HostInformation.h"
#include "support/store/Defaults.h"

#include <QScopeGuard>
#include <QStorageInfo>
#include <QTest>

#include <arpa/inet.h>
#include <cerrno>
#include <ifaddrs.h>
#include <net/if.h>
#include <vector>

class HostInformationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void translation_data() {
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("value");
        QTest::addColumn<bool>("translated");
        QTest::addColumn<bool>("logged");
        QTest::newRow("translated") << 0 << 1 << true << false;
        QTest::newRow("native") << 0 << 0 << false << false;
        QTest::newRow("no such setting") << ENOENT << 0 << false << false;
        QTest::newRow("cannot be read") << EPERM << 1 << false << true;
    }
    void translation() {
        const TestHome home;
        QFETCH(int, error);
        QFETCH(int, value);
        const bool translated = hostrules::isTranslated([&](int& read) {
            read = value;
            return error;
        });
        QTEST(translated, "translated");
        QString said;
        for (int i = 0; i < 10; ++i)
            said += defaultString(makeString("quillonlib_asl_lev3_pos%i", i)).value_or(QString());
        QTEST(said.contains("Error:    sysctl.proctranslated returned 1"), "logged");
    }

    void otherUsers_data() {
        QTest::addColumn<QString>("who");
        QTest::addColumn<QStringList>("users");
        QTest::newRow("nobody") << "" << QStringList();
        QTest::newRow("console") << "me console Nov 1\nanna console Nov 2\n" << QStringList{"anna"};
        QTest::newRow("a name around mine") << "me2 console Nov 1\nanna console Nov 2 (me)\n"
                                            << QStringList();
        QTest::newRow("screens") << "anna tty2   2026-11-01 09:00\nbob   :1   2026-11-01 09:00 (:1)\n"
                                 << QStringList{"anna", "bob"};
        QTest::newRow("from elsewhere")
            << "a pts/0 09:00 (10.0.0.7)\nb ttyS0 09:00\nc ttys001 09:00\nd seat0 09:00\n"
            << QStringList();
        QTest::newRow("no terminal") << "anna\n tty2\n" << QStringList();
    }
    void otherUsers() {
        QFETCH(QString, who);
        QTEST(hostrules::otherUsers(who, "me"), "users");
    }

    void diskNumbers_data() {
        QTest::addColumn<QString>("device");
        QTest::addColumn<int>("number");
        QTest::newRow("slices") << "/dev/disk3s1s1" << 3;
        QTest::newRow("whole") << "/dev/disk12" << 12;
        QTest::newRow("another name") << "/dev/sda1" << -1;
        QTest::newRow("a link") << "/dev/disk/by-id/usb-1s1" << -1;
        QTest::newRow("an overlay") << "overlay" << -1;
    }
    void diskNumbers() {
        QFETCH(QString, device);
        QTEST(hostrules::diskNumber(device), "number");
    }

    void administrators_data() {
        QTest::addColumn<QByteArray>("group");
        QTest::addColumn<QByteArray>("member");
        QTest::addColumn<bool>("is");
        QTest::newRow("admin") << QByteArray("admin") << QByteArray("me") << true;
        QTest::newRow("sudo") << QByteArray("sudo") << QByteArray("me") << true;
        QTest::newRow("wheel") << QByteArray("wheel") << QByteArray("me") << true;
        QTest::newRow("another group") << QByteArray("users") << QByteArray("me") << false;
        QTest::newRow("another user") << QByteArray("sudo") << QByteArray("me2") << false;
    }
    void administrators() {
        QFETCH(QByteArray, group);
        QFETCH(QByteArray, member);
        const auto membersOf = [&](const char* name) {
            return name == group ? QByteArrayList{"root", member} : QByteArrayList();
        };
        QTEST(hostrules::isAdministrator("me", membersOf), "is");
    }

    void disks() {
        QList<QVariantMap> list;
        PXHostInformation::addDiskToList(list, 3, "Movies", {"USB", "2 TB"});
        PXHostInformation::addDiskToList(list, 4, "Plain", {});
        QCOMPARE(list[0], (QVariantMap{{"DiskNumber", 3}, {"DiskName", "Movies (USB, 2 TB)"}}));
        QCOMPARE(list[1]["DiskName"], QVariant("Plain"));
    }

    void routes_data() {
        QTest::addColumn<QString>("row");
        QTest::addColumn<bool>("isOnline");
        QTest::newRow("no route") << "" << false;
        QTest::newRow("default") << "eth0\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0" << true;
        QTest::newRow("rejecting") << "*\t00000000\t00000000\t0200\t0\t0\t0\t00000000\t0\t0\t0" << false;
        QTest::newRow("up but rejecting")
            << "*\t00000000\t00000000\t0201\t0\t0\t0\t00000000\t0\t0\t0" << false;
        QTest::newRow("own network") << "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0" << false;
        QTest::newRow("cut off") << "eth0\t00000000" << false;
    }
    void routes() {
        QFETCH(QString, row);
        QTEST(hostrules::hasDefaultRoute("Iface\tDestination\tGateway\tFlags\n" + row + '\n'), "isOnline");
    }

    void firstAddress() {
        sockaddr_in four{};
        four.sin_family = AF_INET;
        sockaddr_in6 six{};
        six.sin6_family = AF_INET6;
        QCOMPARE(::inet_pton(AF_INET, "192.0.2.7", &four.sin_addr), 1);
        QCOMPARE(::inet_pton(AF_INET6, "2001:db8::7", &six.sin6_addr), 1);
        auto* const v4 = reinterpret_cast<sockaddr*>(&four);
        auto* const v6 = reinterpret_cast<sockaddr*>(&six);
        struct Row {
            QByteArray name;
            uint flags;
            sockaddr* address;
        };
        const auto ask = [](std::vector<Row> rows, bool ipv6) {
            std::vector<ifaddrs> list(rows.size());
            for (size_t i = 0; i < rows.size(); ++i) {
                list[i].ifa_next = i + 1 < rows.size() ? &list[i + 1] : nullptr;
                list[i].ifa_name = rows[i].name.data();
                list[i].ifa_flags = rows[i].flags;
                list[i].ifa_addr = rows[i].address;
            }
            return hostrules::firstAddress(list.data(), ipv6);
        };
        const Row loop{"lo", IFF_UP, v4};
        const Row bare{"wg0", IFF_UP, nullptr};
        const Row down{"eth0", 0, v4};
        const Row up{"eth1", IFF_UP | IFF_RUNNING, v4};
        const Row upSix{"eth1", IFF_UP, v6};
        QCOMPARE(ask({loop, bare, down}, false), "127.0.0.1");
        QCOMPARE(ask({loop, bare, down, up}, true), "::1");
        QCOMPARE(ask({loop, bare, down, upSix, up}, false), "192.0.2.7");
        QCOMPARE(ask({loop, bare, up, upSix}, true), "2001:db8::7");
        QCOMPARE(hostrules::firstAddress(nullptr, false), "127.0.0.1");
    }

    void model() {
        const TestHome home;
        const QString blank = home.write("blank", "\n");
        const QString board = home.write("board", QByteArray("Board 4 Rev 1.2\0", 16));
        QCOMPARE(hostrules::firstModel({home.path("missing"), blank, board}), "Board 4 Rev 1.2");
        QCOMPARE(hostrules::firstModel({home.path("missing"), blank}), "");
    }

    void storeCountry() {
        const TestHome home;
        const QByteArray userHome = qgetenv("HOME");
        qputenv("HOME", home.path().toUtf8());
        const auto restored = qScopeGuard([&] { qputenv("HOME", userHome); });
        const auto journal = [&](const QByteArray& updates) {
            home.write(
                "Library/Application Support/App Store/updatejournal.plist",
                "<plist version=\"1.0\"><dict><key>other</key><array><dict><key>url</key><string>"
                "https://store.ravelin.example/fr/x</string></dict></array><key>autoInstalledUpdates</key>" +
                    updates + "</dict></plist>");
            return PXHostInformation::appStoreCountryCode();
        };
        const QByteArray update =
            "<dict><key>id</key><integer>1</integer><key>url</key><string>%</string></dict>";
        const auto at = [&](const char* address) { return QByteArray(update).replace("%", address); };
        QVERIFY(!PXHostInformation::appStoreCountryCode());
        QCOMPARE(journal("<array>" + at("https://store.ravelin.example/us/app") +
                         at("https://store.ravelin.example/de/app") + "</array>"),
                 "de");
        QVERIFY(!journal("<array>" + at("https://store.ravelin.example/us/app") +
                         at("https://a.example/de/") + "</array>"));
        QVERIFY(!journal("<array>" + at("https://store.ravelin.example/us/app") + "<dict></dict></array>"));
        QVERIFY(!journal("<array/>"));
        QVERIFY(!journal("<array><dict><key>url"));

        QVERIFY(!PXHostInformation::growlInstallURL());
        const QString pane = "Library/PreferencePanes/Growl.prefPane/Contents/Resources/GrowlHelperApp.app";
        home.write(pane + "/x");
        QCOMPARE(PXHostInformation::growlInstallURL(), QUrl::fromLocalFile(home.path(pane)));
    }

    void volumes() {
        // Every visible volume's own mark against the flag that is asked for.
        const auto volumes = QStorageInfo::mountedVolumes();
        for (const QStorageInfo& volume : volumes)
            QCOMPARE(hostrules::isOnReadOnlyVolume(volume.rootPath()), volume.isReadOnly());
        QVERIFY(!hostrules::isOnReadOnlyVolume("/nowhere/at/all"));
    }

    void places() {
        QVERIFY(hostrules::isTranslocated("/private/AppTranslocation/1/d"));
        QVERIFY(!PXHostInformation::isRunningTranslocated());
        QCOMPARE(hostrules::localName("desk.office.example"), "desk.local");
        QCOMPARE(hostrules::localName(""), "");
    }

    void thisMachineAnswers() {
        QVERIFY(PXHostInformation::runningProcesses().contains(QCoreApplication::applicationFilePath()));
        QVERIFY(PXHostInformation::ipName().endsWith(".local"));
        QVERIFY(PXHostInformation::ipAddress(false).count(u'.') == 3);
        QVERIFY(PXHostInformation::ipAddress(true).contains(u':'));
        QVERIFY(operatingSystemVersionString().contains(QSysInfo::kernelVersion()));
        QVERIFY(!PXHostInformation::otherLoggedInUsers().contains(qEnvironmentVariable("USER", "root")));
    }
};

QTEST_GUILESS_MAIN(HostInformationTest)
#include "tst_HostInformation.moc"
