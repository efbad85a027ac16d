#include "fakes/TestHome.h"
#include "support/reports/HostInformation.h"

#include <QTest>

class HostInformationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void otherUsers() {
        const auto others = [](const QString& who) { return hostrules::otherUsers(who, "me").join(' '); };
        QCOMPARE(others("me console Nov 1\nanna console Nov 2\n"), "anna");
        // A name around mine.
        QCOMPARE(others("me2 console Nov 1\nanna console Nov 2 (me)\n"), "");
        QCOMPARE(others("anna tty2   2026-11-01 09:00\nbob   :1   2026-11-01 09:00 (:1)\n"), "anna bob");
        // From elsewhere, and without a terminal.
        QCOMPARE(others("a pts/0 09:00 (10.0.0.7)\nb ttyS0 09:00\nc ttys001 09:00\nd seat0 09:00\n"), "");
    }

    void disks() {
        QCOMPARE(hostrules::diskNumber("/dev/disk12s1"), 12);
        QCOMPARE(hostrules::diskNumber("/dev/disk/by-id/usb-1s1"), -1);
        QList<QVariantMap> list;
        PXHostInformation::addDiskToList(list, 3, "Movies", {"USB", "2 TB"});
        QCOMPARE(list[0], (QVariantMap{{"DiskNumber", 3}, {"DiskName", "Movies (USB, 2 TB)"}}));
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

    void routes() {
        const auto isOnline = [](const QString& row) {
            return hostrules::hasDefaultRoute("Iface\tDestination\tGateway\tFlags\n" + row + '\n');
        };
        QVERIFY(isOnline("eth0\t00000000\t010200C0\t0003\t0\t0\t0\t00000000\t0\t0\t0"));
        // Rejecting ones, up or not; the own network; one that is cut off.
        for (const char* row :
             {"*\t00000000\t00000000\t0200\t0\t0\t0\t00000000\t0\t0\t0",
              "*\t00000000\t00000000\t0201\t0\t0\t0\t00000000\t0\t0\t0",
              "eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0", "eth0\t00000000"})
            QVERIFY2(!isOnline(row), row);
    }

    void model() {
        const TestHome home;
        const QString blank = home.write("blank", "\n");
        const QString board = home.write("board", QByteArray("Board 4 Rev 1.2\0", 16));
        QCOMPARE(hostrules::firstModel({home.path("missing"), blank, board}), "Board 4 Rev 1.2");
        QCOMPARE(hostrules::firstModel({home.path("missing"), blank}), "");
    }

    void names() {
        QVERIFY(hostrules::isTranslocated("/private/AppTranslocation/1/d"));
        QVERIFY(!PXHostInformation::isRunningTranslocated());
        QCOMPARE(hostrules::localName("desk.office.example"), "desk.local");
        QCOMPARE(hostrules::storeCountryCode("https://store.ravelin.example/us/app").value(), "us");
        QVERIFY(!hostrules::storeCountryCode("https://a.example/de/"));
    }

    void thisMachineAnswers() {
        QVERIFY(PXHostInformation::runningProcesses().contains(QCoreApplication::applicationFilePath()));
        QCOMPARE(PXHostInformation::ipAddress(false).count(u'.'), 3);
        QVERIFY(PXHostInformation::ipAddress(true).contains(u':'));
        QVERIFY(operatingSystemVersionString().contains(QSysInfo::kernelVersion()));
    }
};

QTEST_GUILESS_MAIN(HostInformationTest)
#include "tst_HostInformation.moc"
