#include "fakes/Logged.h"
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
    void translation() {
        const TestHome home;
        const auto isTranslated = [](int error, int value) {
            return hostrules::isTranslated([&](int& read) {
                read = value;
                return error;
            });
        };
        QVERIFY(isTranslated(0, 1));
        QVERIFY(!isTranslated(0, 0));
        QVERIFY(!isTranslated(ENOENT, 0) && logged().isEmpty());  // This processor has no such setting.
        QVERIFY(!isTranslated(EPERM, 1));
        QVERIFY(logged().join(' ').contains("Error:    sysctl.proctranslated returned 1"));
    }

    void otherUsers() {
        const auto others = [](const QString& who) { return hostrules::otherUsers(who, "me"); };
        QCOMPARE(others(""), QStringList());
        QCOMPARE(others("me console Nov 1\nanna console Nov 2\n"), QStringList{"anna"});
        // A name that contains mine.
        QCOMPARE(others("me2 console Nov 1\nanna console Nov 2 (me)\n"), QStringList());
        QCOMPARE(others("anna tty2   2026-11-01 09:00\nbob   :1   2026-11-01 09:00 (:1)\n"),
                 (QStringList{"anna", "bob"}));
        // Remote users, and users without a terminal.
        QCOMPARE(others("a pts/0 09:00 (10.0.0.7)\nb ttyS0 09:00\nc ttys001 09:00\nd seat0 09:00\n"),
                 QStringList());
        QCOMPARE(others("anna\n tty2\n"), QStringList());
    }

    void diskNumbers() {
        QCOMPARE(hostrules::diskNumber("/dev/disk3s1s1"), 3);
        QCOMPARE(hostrules::diskNumber("/dev/disk12"), 12);
        for (const char* other : {"/dev/sda1", "/dev/disk/by-id/usb-1s1", "overlay"})
            QCOMPARE(hostrules::diskNumber(other), -1);
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

    void routes() {
        const auto isOnline = [](const QString& row) {
            return hostrules::hasDefaultRoute("Iface\tDestination\tGateway\tFlags\n" + row + '\n');
        };
        QVERIFY(isOnline("eth0\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0"));
        // Rejecting routes, up or not; the own network; a truncated line.
        for (const char* row :
             {"*\t00000000\t00000000\t0200\t0\t0\t0\t00000000\t0\t0\t0",
              "*\t00000000\t00000000\t0201\t0\t0\t0\t00000000\t0\t0\t0",
              "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0", "eth0\t00000000"})
            QVERIFY2(!isOnline(row), row);
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
        const auto country = [&](const QByteArray& updates) {
            home.write(
                "Library/Application Support/App Store/updatejournal.plist",
                "<plist version=\"1.0\"><dict><key>other</key><array><dict><key>url</key><string>"
                "https://store.ravelin.example/fr/x</string></dict></array><key>autoInstalledUpdates</key>" +
                    updates + "</dict></plist>");
            return PXHostInformation::appStoreCountryCode();
        };
        const auto at = [&](const QByteArray& address) {
            return "<dict><key>id</key><integer>1</integer><key>url</key><string>" + address +
                   "</string></dict>";
        };
        const QByteArray american = "<array>" + at("https://store.ravelin.example/us/app");
        QVERIFY(!PXHostInformation::appStoreCountryCode());
        QCOMPARE(country(american + at("https://store.ravelin.example/de/app") + "</array>"), "de");
        for (const QByteArray& updates :
             {american + at("https://a.example/de/") + "</array>", american + "<dict></dict></array>",
              QByteArray("<array/>"), QByteArray("<array><dict><key>url")})
            QVERIFY2(!country(updates), updates);

        QVERIFY(!PXHostInformation::growlInstallURL());
        const QString pane = "Library/PreferencePanes/Growl.prefPane/Contents/Resources/GrowlHelperApp.app";
        home.write(pane + "/x");
        QCOMPARE(PXHostInformation::growlInstallURL(), QUrl::fromLocalFile(home.path(pane)));
    }

    void volumes() {
        // Compares the read-only flag with that of every visible volume.
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

    void thisMachine() {
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
