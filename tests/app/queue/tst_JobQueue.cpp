#include "app/intake/FileIntake.h"
#include "app/queue/EndAction.h"
#include "app/queue/JobQueue.h"
#include "app/queue/QueueOutcome.h"
#include "fakes/FakeTool.h"
#include "fakes/InstantProof.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "tool/ToolReaper.h"

#include <QSignalSpy>

namespace {

class FakeWaiting : public WaitingFiles {
public:
    bool areWaiting() const override { return waiting; }
    void cancelAdd() override { ++cancelled; }

    bool waiting = false;
    int cancelled = 0;
};

/// A queue with a fake tool whose conversions run until release().
struct Stage {
    Stage() : tool(home.path()) { tool.setConversion(FakeTool::waitFor(home.path("go"))); }
    ~Stage() {
        queue.removeAll();
        std::ignore = QTest::qWaitFor([] { return ToolReaper::shared().isIdle(); }, 10000);
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    bool add(const QString& name, const QString& folder = {}) {
        MKVFileInfo info;
        info.fileName = name + ".mkv";
        info.fileURL = QUrl::fromLocalFile(home.write(info.fileName));
        const QString output = (folder.isEmpty() ? home.path() : folder) + u'/' + name + ".mp4";
        info.destinationURL = QUrl::fromLocalFile(queue.uniqueDestination(output));
        info.audioTrackInformation = {{"#1: eng (ac3)", 48000}};
        return queue.addJob(std::make_unique<ConversionJob>(queue, info, 0));
    }
    void addAll(const QStringList& names) {
        for (const QString& name : names)
            add(name);
    }
    void release() const { home.write("go"); }

    /// Names and states from the top: "b:1 a:0".
    QString list() const {
        QStringList result;
        for (qsizetype i = 0; i < queue.count(); ++i) {
            const ConversionJob* job = queue.job(i);
            result.append(job->fileInfo().fileName.chopped(4) + u':' + QString::number(int(job->state())));
        }
        return result.join(u' ');
    }

    TestHome home;
    FakeTool tool;
    FakeWaiting waiting;
    JobQueue queue{waiting};
};

}  // namespace

class JobQueueTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theNewestIsNext() {
        Stage stage;
        stage.addAll({"a", "b", "c"});
        QCOMPARE(stage.list(), "c:0 b:0 a:1");
        QCOMPARE(stage.waiting.cancelled, 3);
        QStringList started;
        connect(&stage.queue, &JobQueue::jobStateChanged, this, [&](const auto* job, JobState, JobState now) {
            if (now == JobState::Converting) started.append(job->fileInfo().fileName);
        });
        stage.release();
        QTRY_COMPARE(stage.list(), "c:3 b:3 a:3");
        QCOMPARE(started, (QStringList{"c.mkv", "b.mkv"}));
        setDefaultInt("InsertJobsAtBottom", 1);
        stage.add("d");
        QCOMPARE(stage.list(), "c:3 b:3 a:3 d:1");
    }

    void limits() {
        constexpr qint64 kMaximum = std::numeric_limits<qint64>::max();
        for (const auto& [isOn, count, limit] :
             {std::tuple(0, 5LL, 1LL), {1, 0, 2}, {1, 1, 3}, {1, kMaximum, kMaximum}, {1, -7, 2}}) {
            Stage stage;
            setDefaultInt(kConcurrentJobsKey, isOn);
            setDefaultInt(kConcurrentJobCountKey, count);
            QCOMPARE(JobQueue::conversionLimit(), limit);
            stage.addAll({"a", "b", "c", "d"});
            QCOMPARE(stage.queue.jobCountWithState(JobState::Converting), qMin<qint64>(limit, 4));
        }
    }

    void pauseAndResume() {
        Stage stage;
        setDefaultInt(kConcurrentJobsKey, 1);
        stage.addAll({"a", "b"});
        QSignalSpy paused(&stage.queue, &JobQueue::pausedChanged);
        stage.queue.pauseContinueClicked(false);  // The queue runs: no effect.
        QCOMPARE(paused.count(), 0);
        stage.queue.pauseContinueClicked(true);
        QCOMPARE(stage.list(), "b:2 a:2");
        stage.add("c");
        stage.queue.startNextJobInQueue();
        QCOMPARE(stage.list(), "c:0 b:2 a:2");
        stage.queue.pauseContinueClicked(true);
        QCOMPARE(stage.list(), "c:1 b:1 a:2");  // From the top; paused jobs like queued ones.
        QCOMPARE(paused.count(), 2);
    }

    void aJobStartedOnItsOwnEndsThePause() {
        Stage stage;
        stage.queue.pauseContinueClicked(true);
        stage.addAll({"a", "b"});
        stage.queue.job(1)->continueJob();
        QVERIFY(!stage.queue.isPaused());
        QCOMPARE(stage.list(), "b:0 a:1");  // Only this job.
    }

    void cleaningUpKeepsFailedOnes() {
        Stage stage;
        stage.tool.setConversion("case $destination in *bad*) exit 1;; *) echo a > $destination; esac\n");
        stage.addAll({"a", "bad", "c"});
        QTRY_COMPARE(stage.list(), "c:3 bad:4 a:3");
        QSignalSpy removed(&stage.queue, &JobQueue::jobRemoved);
        stage.queue.cleanClicked();
        QCOMPARE(stage.list(), "bad:4");
        QCOMPARE(removed.count(), 2);
        QVERIFY(QFile::exists(stage.home.path("a.mp4")));
        QCOMPARE(stage.queue.jobCountWithState(JobState::Finished), 0);
    }

    void whatWaitsIsMoved_data() {
        addRows<QString, QString, QString>({{"to the top", "a", "0", "a c r d b"},
                                            {"down", "c", "4", "d b r c a"},
                                            {"in their order", "a d", "0", "d a r c b"},
                                            {"what runs stays", "r b", "0", "b c r d a"},
                                            {"one row up", "b a", "up", "c b r a d"},
                                            {"no further up", "c b", "up", "c b r d a"},
                                            {"one row down", "c a", "down", "d c r b a"}});
    }
    void whatWaitsIsMoved() {
        const auto [names, where, expected] = row<QString, QString, QString>();
        Stage stage;
        stage.addAll({"r", "d", "c"});
        setDefaultInt("InsertJobsAtBottom", 1);
        stage.addAll({"b", "a"});
        QList<ConversionJob*> jobs;
        for (qsizetype i = 0; i < stage.queue.count(); ++i) {
            if (names.contains(stage.queue.job(i)->fileInfo().fileName.chopped(4)))
                jobs.append(stage.queue.job(i));
        }
        where == "up"     ? stage.queue.moveUp(jobs)
        : where == "down" ? stage.queue.moveDown(jobs)
                          : stage.queue.move(jobs, where.toInt());
        QCOMPARE(stage.list().remove(QRegularExpression(":.")), expected);
        QStringList started;
        connect(&stage.queue, &JobQueue::jobStateChanged, this, [&](const auto* job, JobState, JobState now) {
            if (now == JobState::Converting) started.append(job->fileInfo().fileName.chopped(4));
        });
        stage.release();
        QTRY_COMPARE(stage.queue.jobCountWithState(JobState::Finished), 5);
        QCOMPARE(started.join(u' '), QString(expected).remove(" r"));
    }

    void severalAreRemovedAtOnce() {
        Stage stage;
        stage.addAll({"a", "b", "c", "d"});
        QSignalSpy changed(&stage.queue, &JobQueue::jobStateChanged);
        stage.queue.removeJobs({stage.queue.job(3), stage.queue.job(1), stage.queue.job(0)});
        QCOMPARE(stage.list(), "b:1");
        QCOMPARE(changed.count(), 1);  // None of the others was started in between.
    }

    void anUnwritableDestinationRefuses() {
        Stage stage;
        QVERIFY(!stage.add("a", "/proc"));
        QCOMPARE(stage.waiting.cancelled, 0);  // It is still the current file.
        QCOMPARE(stage.queue.windowTitle(), "Ravelin ");
        stage.waiting.waiting = true;
        QVERIFY(stage.add("a"));
        QVERIFY(!stage.add("b", "/proc"));
        QCOMPARE(stage.list(), "a:0");
        stage.waiting.waiting = false;
        QVERIFY(!stage.add("b", "/proc"));
        QCOMPARE(stage.list(), "a:1");  // Does not wait for the user's choice.
    }

    void theSumOfAQueue_data() {
        addRows<QStringList, QString>({{"three are few", {"a", "b", "bad"}, ""},
                                       {"each kind", {"bad", "a", "damaged", "b"}, "2 1 1"},
                                       {"tried again", {"again", "a", "b", "c"}, "4 0 0"},
                                       {"the last one stopped", {"a", "b", "c", "d", "stop"}, ""}});
    }
    void theSumOfAQueue() {
        const auto [names, expected] = row<QStringList, QString>();
        Stage stage;
        setDefaultInt(kAutoCleanKey, 1);
        setDefaultInt("InsertJobsAtBottom", 1);
        stage.tool.setConversion("tried=" + stage.home.path("tried").toUtf8() + R"(
            case $destination in
                *bad*) exit 1;;
                *again*) [ -e $tried ] || { : >$tried; exit 1; };;
                *stop*) wait_until "false";;
            esac
            echo a >$destination
        )");
        connect(&stage.queue, &JobQueue::jobAdded, [](ConversionJob* job) {
            Receipt receipt;
            receipt.verdict = ProofVerdict::Damaged;
            if (job->fileInfo().fileName == "damaged.mkv") proveWith(*job, receipt);
        });
        connect(&stage.queue, &JobQueue::jobStateChanged, [](ConversionJob* job, JobState, JobState now) {
            const auto act = [job, now] {
                const QString name = job->fileInfo().fileName;
                if (name == "again.mkv" && now == JobState::Failed) job->queueAgain();
                if (name == "stop.mkv") job->remove();
            };
            QMetaObject::invokeMethod(job, act, Qt::QueuedConnection);  // Not if it was deleted meanwhile.
        });
        const QueueOutcome outcome(stage.queue);
        QStringList sums;
        connect(&outcome, &QueueOutcome::summedUp, [&](const QueueOutcome::Sum& sum) {
            sums.append(QString("%1 %2 %3").arg(sum.converted).arg(sum.damaged).arg(sum.failed));
        });
        stage.addAll(names);
        QTRY_VERIFY(stage.queue.isIdle());
        QTRY_COMPARE(sums.join(','), expected);
        stage.addAll({"w", "x", "y", "z"});
        QTRY_COMPARE(sums.mid(expected.isEmpty() ? 0 : 1), QStringList("4 0 0"));
    }

    void whatFollowsTheEnd_data() {
        addRows<QString, QString>({
            {"the last one ends", "add sleep end", "2 60"},
            {"chosen afterwards", "add end sleep", "2"},
            {"the last one removed", "add sleep remove", "2"},
            {"one ended, the last one removed", "add sleep end add remove", "2"},
            {"paused", "add sleep pause", "2"},
            {"a movie on the sheet", "add sleep sheet end", "2"},
            {"it leaves the sheet", "add sleep sheet end leave", "2 60"},
            {"opened during the minute", "add sleep end sheet", "2"},
            {"queued during the minute", "add sleep end add", "2"},
            {"that ends, too", "add sleep end add end", "2 60"},
            {"tried again during the minute", "bad sleep end again", "2"},
            {"cancelled", "add sleep end cancel add end", "0"},
            {"another choice", "add sleep end shut", "3 60"},
            {"another choice before", "add sleep sheet end shut leave", "3 60"},
        });
    }
    void whatFollowsTheEnd() {
        const auto [steps, expected] = row<QString, QString>();
        Stage stage;
        const QString go = stage.home.path("go");
        stage.tool.setConversion(FakeTool::waitFor(go) + "case $destination in *bad*) exit 1;; esac\n");
        EndAction action(
            stage.queue, [&] { return stage.waiting.waiting; }, std::chrono::hours(1));
        const auto sheet = [&](bool isFull) {
            stage.waiting.waiting = isFull;
            action.reconsider();
        };
        const QHash<QString, std::function<void()>> meanings{
            {"add",
             [&] {
                 QFile::remove(go);
                 stage.add("a");
             }},
            {"bad", [&] { stage.add("bad"); }},
            {"end",
             [&] {
                 stage.release();
                 QTRY_VERIFY(stage.queue.isIdle());
             }},
            {"again", [&] { stage.queue.job(0)->queueAgain(); }},
            {"remove", [&] { stage.queue.job(0)->remove(); }},
            {"pause", [&] { stage.queue.pauseContinueClicked(true); }},
            {"sheet", [&] { sheet(true); }},
            {"leave", [&] { sheet(false); }},
            {"sleep", [&] { action.choose(EndAction::Kind::Sleep); }},
            {"shut", [&] { action.choose(EndAction::Kind::ShutDown); }},
            {"cancel", [&] { action.cancel(); }},
        };
        for (const QString& step : steps.split(u' '))
            meanings.value(step)();
        QString state = QString::number(int(action.kind()));
        if (const auto left = action.secondsLeft()) state += QString(" %1").arg(*left);
        QCOMPARE(state, expected);
    }

    void theEndIsCarriedOutAfterSixtySteps() {
        for (const QString& error : {QString(), QString("no swap")}) {
            Stage stage;
            EndAction action(
                stage.queue, [] { return false; }, std::chrono::milliseconds(1));
            QList<int> seconds;
            connect(&action, &EndAction::changed, [&] { seconds.append(action.secondsLeft().value_or(0)); });
            QSignalSpy refused(&action, &EndAction::message);
            stage.home.desktop.powerError = error;
            action.choose(EndAction::Kind::ShutDown);
            stage.add("a");
            stage.release();
            QTRY_COMPARE(stage.home.desktop.carriedOut, QList{PowerAction::ShutDown});
            QCOMPARE(seconds.size(), 62);  // The choice, the minute, the end.
            QCOMPARE(seconds.mid(60), QList({1, 0}));
            QVERIFY(stage.home.desktop.held.isEmpty());
            QCOMPARE(action.kind(), EndAction::Kind::Nothing);
            QCOMPARE(refused.count(), error.isEmpty() ? 0 : 1);
        }
    }

    void quitsAlsoWhenTheJobCleansItselfUp() {
        Stage stage;
        setDefaultInt(kAutoCleanKey, 1);
        setDefaultInt(kQuitAfterConversionKey, 1);
        QSignalSpy quit(&stage.queue, &JobQueue::quitRequested);
        stage.release();
        stage.add("a");
        QTRY_COMPARE(quit.count(), 1);
        QCOMPARE(stage.queue.count(), 0);
    }
};

QTEST_GUILESS_MAIN(JobQueueTest)
#include "tst_JobQueue.moc"
