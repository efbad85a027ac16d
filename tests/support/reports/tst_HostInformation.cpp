#include "fakes/TestHome.h"
#include "support/reports/HostInformation.h"

#include <QTest>

class HostInformationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
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

    void operatingSystem() { QVERIFY(operatingSystemVersionString().contains(QSysInfo::kernelVersion())); }
};

QTEST_GUILESS_MAIN(HostInformationTest)
#include "tst_HostInformation.moc"
