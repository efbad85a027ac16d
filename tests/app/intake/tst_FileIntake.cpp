#include "app/intake/FileIntake.h"
#include "fakes/FakeTool.h"
#include "fakes/TestHome.h"
#include "support/base/Files.h"

#include <QSignalSpy>
#include <QTest>

#include <csignal>

class FileIntakeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lastInFirstOutOneAtATime() {
        const TestHome home;
        const FakeTool tool(home.path());
        FileIntake intake(FileIntake::Messages::Scheduled);
        QSignalSpy started(&intake, &FileIntake::scanningStarted);
        QSignalSpy accepted(&intake, &FileIntake::fileAccepted);
        QSignalSpy idle(&intake, &FileIntake::becameIdle);
        const QString a = home.write("a.mkv");
        const QString b = home.write("b.mkv");
        intake.openFiles({a, b, home.write("a.srt"), home.write("c.txt")});
        QCOMPARE(started.count(), 1);
        QVERIFY(intake.isScanning() && intake.areWaiting());
        QTRY_COMPARE(accepted.count(), 1);
        QCOMPARE(intake.fileInfo()->fileURL.toLocalFile(), b);
        QVERIFY(!intake.fileInfo()->subtitleFileURL);

        // The current movie is not confirmed: no other file is probed, new ones neither.
        const QString c = home.write("c.mkv");
        intake.openFiles({c});
        QCoreApplication::processEvents();
        QCOMPARE(started.count(), 1);
        intake.cancelAdd();
        QTRY_COMPARE(accepted.count(), 2);
        QCOMPARE(intake.fileInfo()->fileURL.toLocalFile(), c);
        intake.cancelAdd();
        QTRY_COMPARE(accepted.count(), 3);
        QCOMPARE(intake.fileInfo()->fileURL.toLocalFile(), a);
        QCOMPARE(intake.fileInfo()->subtitleFileURL.value(), QUrl::fromLocalFile(home.path("a.srt")));
        QVERIFY(intake.fileInfo()->informationString.endsWith("Audiotracks: 1 (0+1)"));
        QCOMPARE(intake.bestLanguage().value(), 0);
        QCOMPARE(idle.count(), 0);
        intake.cancelAdd();
        QCOMPARE(idle.count(), 1);
        QVERIFY(!intake.fileInfo());
    }

    void endsTheProbeUnderWay() {
        const TestHome home;
        const FakeTool tool(home.path());
        tool.setProbe(
            "echo $$ > \"$folder/running.new\"; mv \"$folder/running.new\" \"$folder/running\"; exec sleep "
            "1000");
        auto intake = std::make_unique<FileIntake>(FileIntake::Messages::Scheduled);
        intake->openFiles({home.write("a.mkv")});
        QTRY_VERIFY(QFile::exists(tool.runningMark()));
        const pid_t process = files::contents(tool.runningMark())->trimmed().toInt();
        intake.reset();
        QVERIFY(process > 0 && ::kill(process, 0) != 0);
    }
};

QTEST_GUILESS_MAIN(FileIntakeTest)
#include "tst_FileIntake.moc"
