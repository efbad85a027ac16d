#include "app/queue/Removals.h"
#include "fakes/InstantProof.h"
#include "fakes/LaunchedApplication.h"

namespace {

constexpr int kLongEnough = 30000;  // ms

/// A queue whose movies convert until `finish()`; "a" is on top and runs.
class Queue : public LaunchedApplication {
public:
    Queue() {
        putOutputsNextToSource();
        tool.setConversion(FakeTool::waitFor(path("go")));
        setDefaultInt(kInsertJobsAtBottomKey, 1);
        for (const char* name : {"a.mkv", "b.mkv", "c.mkv"})
            QVERIFY(confirm(name));
    }
    QString names() {
        QString result;
        for (qsizetype i = 0; i < queue().count(); ++i)
            result += queue().job(i)->fileInfo().fileName.first(1);
        return result;
    }
    void finish(int count) {
        write("go");
        QTRY_COMPARE_WITH_TIMEOUT(queue().jobCountWithState(JobState::Finished), count, kLongEnough);
    }
    Removals& removals() { return delegate.removals(); }
};

}  // namespace

class RemovalsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aRunningJobGoesOn() {
        Queue app;
        ConversionJob* running = app.queue().job(0);
        QTRY_VERIFY(QFile::exists(app.path("a.mp4")));
        app.queue().removeJobs({running});
        QCOMPARE(running->state(), JobState::Paused);
        QCOMPARE(app.removals().text(), "Removed “a.mkv” from the list");
        QCOMPARE(app.names(), "bc");
        QCOMPARE(app.queue().job(0)->state(), JobState::Converting);
        app.removals().undo();
        QCOMPARE(app.names(), "abc");
        QCOMPARE(running->state(), JobState::Paused);  // Another one runs now.
        app.finish(3);
        QCOMPARE(app.desktop.notifications.size(), 3);
        QVERIFY(!app.delegate.progress().fraction());
    }

    void afterAWhileItIsGone() {
        Queue app;
        QTRY_VERIFY(QFile::exists(app.path("a.mp4")));
        app.removals().setMilliseconds(1);
        app.queue().removeJobs({app.queue().job(0)});
        QTRY_VERIFY(!app.removals().isOffered());
        QTRY_VERIFY(!QFile::exists(app.path("a.mp4")));
        app.removals().undo();
        QCOMPARE(app.names(), "bc");
    }

    void theEndDoesNotWait() {
        Queue app;
        QTRY_VERIFY(QFile::exists(app.path("a.mp4")));
        app.queue().removeJobs({app.queue().job(0)});
        app.delegate.applicationWillTerminate();
        QTRY_VERIFY(AppDelegate::isTerminated());
        QVERIFY(!QFile::exists(app.path("a.mp4")) && !QFile::exists(app.path("b.mp4")));
        QVERIFY(!app.removals().isOffered());
    }

    void aNameThatWasTakenMeanwhile() {
        Queue app;
        app.queue().removeJobs({app.queue().job(1)});
        app.delegate.openFiles({app.path("b.mkv")});
        QTRY_VERIFY(app.isReady());
        app.sheet().addToQueue();
        app.removals().undo();
        QCOMPARE(app.names(), "abcb");
        QCOMPARE(app.outputOf(3), app.path("b.mp4"));
        QCOMPARE(app.outputOf(1), app.path("b-0.mp4"));
    }

    void manyReturnInSteps() {
        Queue app;
        const auto jobs = [&app] {
            QList<ConversionJob*> list;
            for (qsizetype row = 0; row < app.queue().count(); ++row)
                list.append(app.queue().job(row));
            return list;
        };
        for (int i = 0; i < 3000; ++i) {
            MKVFileInfo info;
            info.destinationURL = QUrl::fromLocalFile(app.path(QString::number(i)));
            auto job = std::make_unique<ConversionJob>(app.queue(), std::move(info), 0);
            app.queue().insertJob(std::move(job), app.queue().count());
        }
        const QList<ConversionJob*> before = jobs();
        QList<ConversionJob*> removed = before;
        removed.removeIf([&](ConversionJob* job) { return before.indexOf(job) % 5 == 0; });
        app.queue().removeJobs(removed);
        QCOMPARE(app.queue().count(), 601);
        app.removals().undo();
        QTRY_COMPARE(app.queue().count(), before.size());
        QCOMPARE(jobs(), before);
        app.queue().removeJobs(removed);
        app.removals().undo();
        app.removals().completeUndo();
        QCOMPARE(jobs(), before);
    }

    void cleanUpAndCancelAll() {
        Queue app;
        Receipt damaged;
        damaged.verdict = ProofVerdict::Damaged;
        proveWith(*app.queue().job(1), damaged);
        app.finish(3);
        QCOMPARE(app.queue().damagedCount(), 1);
        app.queue().cleanClicked();
        QCOMPARE(app.queue().count(), 0);
        app.write("in/1.mkv");
        app.write("in/2.mkv");
        app.write("in/2.srt");
        app.delegate.openFiles({app.path("in")});
        QTRY_VERIFY(app.isReady());
        app.sheet().cancelAll();
        QVERIFY(!app.sheet().isShown());
        QCOMPARE(app.removals().text(), "Left 2 movie(s) out");
        app.removals().undo();
        QTRY_VERIFY(app.isReady());
        QCOMPARE(app.sheet().path(), app.path("in/2.mkv"));
        QVERIFY(app.delegate.intake().fileInfo()->subtitleFileURL);
        QCOMPARE(app.sheet().waitingCount(), 1);
        QCOMPARE(app.delegate.intake().drops().folderOf(app.path("in/1.mkv")), "in");
        QCOMPARE(app.removals().text(), "Removed 3 movie(s) from the list");
        app.removals().undo();
        QCOMPARE(app.names(), "abc");
        QCOMPARE(app.queue().jobCountWithState(JobState::Finished), 3);
        QCOMPARE(app.queue().damagedCount(), 1);
    }
};

QTEST_GUILESS_MAIN(RemovalsTest)
#include "tst_Removals.moc"
