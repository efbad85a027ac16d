#include "fakes/TestHome.h"
#include "support/BundleIntegrity.h"
#include "support/CrashLogs.h"
#include "support/Defaults.h"
#include "support/QuillonLib.h"

#include <QDir>
#include <QFile>
#include <QTest>

class QuillonLibTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void crashReportNames_data() {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("appName");
        QTest::addColumn<bool>("is");
        QTest::newRow("own") << "Ravelin_2024-01-02-030405_7.crash"
                             << "Ravelin" << true;
        QTest::newRow("letter case") << "ravelin_2024.crash"
                                     << "RAVELIN" << true;
        QTest::newRow("accents") << "Rāvélin_2024.crash"
                                 << "Ravelín" << true;
        QTest::newRow("accents of their own") << QString("Rave\u0301lin.crash") << "Ravelin" << true;
        QTest::newRow("another ending") << "Ravelin_2024.CRASH"
                                        << "Ravelin" << false;
        QTest::newRow("within") << "_usr_bin_Ravelin.1000.crash"
                                << "Ravelin" << false;
        QTest::newRow("shorter") << "Rave.crash"
                                 << "Ravelin" << false;
        QTest::newRow("no name") << "Ravelin.crash"
                                 << "" << false;
    }
    void crashReportNames() {
        QFETCH(QString, fileName);
        QFETCH(QString, appName);
        QTEST(crashlogs::isReport(fileName, appName), "is");
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
        home.write("Frameworks/A.framework/Versions/1/A");
        QVERIFY(QFile::link("Versions/1/A", folder + "/A.framework/A"));
        home.write("Frameworks/B.1.framework/B.1", QByteArray("book\0\0\0\0mark", 12));  // An alias.
        QVERIFY(QDir(folder).mkpath("C.framework"));
        QVERIFY(QFile::link("nowhere", folder + "/C.framework/C"));
        QVERIFY(!damagedFramework(folder));
        home.write("Frameworks/E.framework/E");
        QCOMPARE(damagedFramework(folder), folder + "/E.framework/E");
        home.write("Frameworks/D.framework/other");
        QCOMPARE(damagedFramework(folder), folder + "/D.framework/D");
    }
};

QTEST_GUILESS_MAIN(QuillonLibTest)
#include "tst_QuillonLib.moc"
