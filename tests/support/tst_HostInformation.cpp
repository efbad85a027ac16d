#include "fakes/TestHome.h"
#include "support/Defaults.h"
#include "support/Format.h"
#include "support/HostInformation.h"

#include <QTest>

#include <cerrno>

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

    void otherUsers() {
        const QString who =
            "me       console  Nov 1\nanna     console  Nov 2\nbob      ttys001  Nov 2\nme2      console  "
            "Nov 3\n";
        QCOMPARE(hostrules::otherUsers(who, "me"), QStringList{"anna"});
        QCOMPARE(hostrules::otherUsers("", "me"), QStringList());
    }

    void diskNumbers_data() {
        QTest::addColumn<QString>("device");
        QTest::addColumn<int>("number");
        QTest::newRow("slices") << "/dev/disk3s1s1" << 3;
        QTest::newRow("whole") << "/dev/disk12" << 12;
        QTest::newRow("another name") << "/dev/sda1" << -1;
    }
    void diskNumbers() {
        QFETCH(QString, device);
        QTEST(hostrules::diskNumber(device), "number");
    }

    void disks() {
        QList<QVariantMap> list;
        PXHostInformation::addDiskToList(list, 3, "Movies", {"USB", "2 TB"});
        PXHostInformation::addDiskToList(list, 4, "Plain", {});
        QCOMPARE(list[0], (QVariantMap{{"DiskNumber", 3}, {"DiskName", "Movies (USB, 2 TB)"}}));
        QCOMPARE(list[1]["DiskName"], QVariant("Plain"));
    }

    void places() {
        QVERIFY(hostrules::isTranslocated("/private/AppTranslocation/1/d"));
        QVERIFY(!PXHostInformation::isRunningTranslocated());
        QVERIFY(!PXHostInformation::isRunningReadonly());
        QCOMPARE(hostrules::storeCountryCode("https://store.ravelin.example/de/app").value(), "de");
        QVERIFY(!hostrules::storeCountryCode("https://ravelin.example/de/app"));
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
