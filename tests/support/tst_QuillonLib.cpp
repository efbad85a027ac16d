#include "fakes/TestHome.h"
#include "support/BundleIntegrity.h"

#include <QDir>
#include <QFile>
#include <QTest>

class QuillonLibTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
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
