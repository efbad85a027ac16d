#include "app/queue/JournalFile.h"
#include "app/queue/MovedPaths.h"
#include "fakes/LaunchedApplication.h"
#include "fakes/Logged.h"
#include "fakes/Table.h"
#include "support/base/Files.h"
#include "support/reports/QuillonLib.h"

#include <QSignalSpy>

#include <sys/stat.h>

namespace {

constexpr int kLongEnough = 60000;

StoredJob jobNamed(const QString& name, JobState state = JobState::Queued) {
    StoredJob job;
    job.source = "/in/" + name;
    job.destination = "/out/" + name;
    job.state = state;
    return job;
}

/// "a:0 b:4 | waiting": names and states from the top.
QString summary(const StoredQueue& queue) {
    QStringList parts;
    for (const auto& [id, job] : queue.jobs)
        parts.append(job.source.section('/', -1) + ':' + QString::number(static_cast<int>(job.state)));
    if (!queue.waitingMovies.isEmpty()) parts.append("| " + queue.waitingMovies.join(' '));
    return parts.join(' ');
}

/// A session after the other on the same folders. Conversions of movies with a "!" in their names fail, those
/// with a "~" do not end.
class Sessions : public LaunchedApplication {
public:
    Sessions() {
        putOutputsNextToSource();
        setDefaultInt("InsertJobsAtBottom", 1);
        tool.setConversion("case $destination in *!*) echo No space left on device >&2; exit 1;; *~*) " +
                           FakeTool::waitFor(path("never")) + ";; *) echo a > $destination;; esac\n");
        delegate.openFirstFiles({});
    }
    QString folder() const { return QuillonLib::shared().suppDir() + "/Queue"; }
    QString journal() const { return folder() + "/queue.journal"; }
    StoredQueue stored() const {
        return queuerecords::read(files::contents(journal()).value_or(QByteArray())).queue;
    }
    QString onDisk() const { return summary(stored()); }
    static QString list(AppDelegate& session) {
        QStringList parts;
        for (qsizetype i = 0; i < session.queue().count(); ++i) {
            const ConversionJob& job = *session.queue().job(i);
            parts.append(job.fileInfo().fileName + ':' + QString::number(static_cast<int>(job.state())));
        }
        return parts.join(' ');
    }
    /// Quits, and starts again.
    std::unique_ptr<AppDelegate> next() {
        delegate.terminate(false);
        auto session = std::make_unique<AppDelegate>(panels);
        QObject::connect(session.get(), &AppDelegate::statusMessage,
                         [this](const QString& text) { status = text; });
        session->applicationWillFinishLaunching();
        session->openFirstFiles({});
        return session;
    }
};

}  // namespace

class QueueStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recordsAddUp_data() {
        using namespace queuerecords;
        const auto a = job(1, 0, jobNamed("a"));
        const auto ab = a + job(2, 1, jobNamed("b"));
        const auto abc = ab + job(3, 2, jobNamed("c"));
        addRows<QByteArray, QString>({
            {"in order", abc, "a:0 b:0 c:0"},
            {"at the top", ab + job(3, 0, jobNamed("c")), "c:0 a:0 b:0"},
            {"between", ab + job(3, 1, jobNamed("c")), "a:0 c:0 b:0"},
            {"behind one that is finished", abc + state(2, JobState::Finished) + job(4, 2, jobNamed("d")),
             "a:0 d:0 c:0"},
            {"behind one that nobody knows", ab + job(3, 9, jobNamed("c")), "a:0 b:0 c:0"},
            {"moved to the top", abc + moved(3, 0), "c:0 a:0 b:0"},
            {"moved down", abc + moved(1, 2), "b:0 a:0 c:0"},
            {"moved behind itself", abc + moved(2, 2), "a:0 b:0 c:0"},
            {"removed", abc + removed({1, 3}), "b:0"},
            {"removed and had back", abc + removed({2}) + job(2, 1, jobNamed("b")), "a:0 b:0 c:0"},
            {"states", abc + state(1, JobState::Converting) + state(2, JobState::Failed), "a:1 b:4 c:0"},
            {"queued again", a + state(1, JobState::Failed) + job(1, 0, jobNamed("a")), "a:0"},
            {"states of unknown jobs", a + state(7, JobState::Failed) + removed({8}), "a:0"},
            {"waiting", waiting(0, {"x", "y", "z"}) + waiting(1, {"w"}), "| x w"},
        });
    }
    void recordsAddUp() {
        const auto [records, expected] = row<QByteArray, QString>();
        const auto read = queuerecords::read(queuerecords::header() + records);
        QVERIFY(!read.isDamaged);
        QCOMPARE(summary(read.queue), expected);
        const auto again = queuerecords::read(queuerecords::whole(read.queue));
        QVERIFY(again.isCompact && !again.isDamaged);
        QCOMPARE(summary(again.queue), expected);
    }

    void everythingOfAJobIsStored() {
        StoredJob job = jobNamed("ä \n\"#1.mkv", JobState::Failed);
        job.subtitleFile = "/in/a.srt";
        job.openedFolder = "/out";
        job.mayReplaceDestination = true;
        job.audioTrack = 2;
        job.audioText = "#3: eng (ac3) [5.1]";
        job.overrides = {true, true, true, SubtitleEncoding{7}};
        job.failure = {{"Title",
                        "Reason",
                        "Message\nof two lines",
                        {FailureAction::SendToSupport, FailureAction::TryAgain},
                        "Preference"},
                       {"-i", "a b"},
                       "what it said"};
        const auto back = storedJob(toJson(job));
        QVERIFY(back);
        QCOMPARE(toJson(*back), toJson(job));
        QCOMPARE(back->overrides, job.overrides);
        QCOMPARE(back->failure.explanation.actions, job.failure.explanation.actions);
        QCOMPARE(back->failure.arguments, job.failure.arguments);
        QCOMPARE(back->audioTrack, 2);
    }

    void aJournalThatEndsAnywhere() {
        using namespace queuerecords;
        const QList<QByteArray> lines{
            header(),    job(1, 0, jobNamed("a")), job(2, 1, jobNamed("b")),    state(1, JobState::Failed),
            moved(2, 0), waiting(0, {"/in/x"}),    state(2, JobState::Finished)};
        QByteArray whole;
        for (const QByteArray& line : lines) {
            const QString before = summary(read(whole).queue);
            for (qsizetype length = 0; length < line.size(); ++length) {
                const Read torn = read(whole + line.first(length));
                QCOMPARE(summary(torn.queue), before);
                QCOMPARE(torn.isDamaged, whole.isEmpty() && length > 0);
                const Read zeros = read(whole + line.first(length) + QByteArray(100, '\0'));
                QCOMPARE(summary(zeros.queue), before);
            }
            whole += line;
        }
        QCOMPARE(summary(read(whole).queue), "a:4 | /in/x");
    }

    void anyDamageIsSeen() {
        using namespace queuerecords;
        const QByteArray whole =
            header() + job(1, 0, jobNamed("a")) + job(2, 1, jobNamed("b")) + job(3, 2, jobNamed("c"));
        const qsizetype last = whole.lastIndexOf('\n', -2) + 1;
        for (qsizetype place = 0; place < last; ++place) {
            QByteArray damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ 1);
            const Read result = read(damaged);
            QVERIFY2(result.isDamaged, qPrintable(QString::number(place)));
            for (const auto& [id, job] : result.queue.jobs)
                QVERIFY(QStringList({"/in/a", "/in/b", "/in/c"}).contains(job.source));
        }
        QVERIFY(read("{\"queue\": 2}\n").isDamaged);
    }

    void aFileGrowsOrIsReplaced() {
        const TestHome home;
        const QString path = home.path("deep/journal");
        const auto contents = [&] { return files::contents(path).value_or("none"); };
        home.write("deep/journal.new", "what a crash left while it was replaced");
        {
            JournalFile file(path, 0);
            file.replace("a");
            file.append("b");
            file.append("c");
            file.wait();
            QCOMPARE(contents(), "abc");
            struct stat status = {};
            QCOMPARE(::stat(qPrintable(path), &status), 0);
            QCOMPARE(status.st_mode & 0777u, 0600u);
        }
        JournalFile file(path, 2);  // Without what was torn.
        file.append("d");
        file.wait();
        QCOMPARE(contents().first(3), "abd");
        QSignalSpy failed(&file, &JournalFile::failed);
        QFile::remove(path);
        file.append("e");
        QTRY_COMPARE(failed.count(), 1);
        file.replace("abde");
        file.wait();
        QCOMPARE(contents(), "abde");
    }

    void aDiskThatIsFull() {
        const TestHome home;
        if (!QFileInfo("/dev/full").exists()) QSKIP("there is no such device");
        QFile::link("/dev/full", home.path("journal"));
        JournalFile file(home.path("journal"), 0);
        QSignalSpy failed(&file, &JournalFile::failed);
        file.append("a");
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(failed.first().first().toString(), "No space left on device");
    }

    void whatIsInTheQueueIsOnDisk() {
        Sessions app;
        QVERIFY(!QFile::exists(app.journal()));  // Nothing to keep, no file.
        for (const char* name : {"done.mkv", "bad!.mkv", "busy~.mkv", "last.mkv"})
            QVERIFY(app.confirm(name));
        QTRY_COMPARE_WITH_TIMEOUT(app.onDisk(), "bad!.mkv:4 busy~.mkv:1 last.mkv:0", kLongEnough);
        const StoredJob failed = app.stored().jobs.front().job;
        QVERIFY(failed.failure.explanation.message.contains("not enough free space"));
        QCOMPARE(failed.destination, app.path("bad!.mp4"));
        QCOMPARE(failed.audioText, "#1: eng (ac3)");
        app.queue().job(3)->remove();
        app.queue().job(2)->pause();
        QTRY_COMPARE(app.onDisk(), "bad!.mkv:4 busy~.mkv:2");
        QVERIFY(app.open({"x.mkv", "y.mkv"}));
        app.write("y.srt");
        app.delegate.openFiles({app.path("y.srt")});
        QTRY_COMPARE(app.stored().waitingMovies, QStringList({app.path("x.mkv"), app.path("y.mkv")}));
        QTRY_COMPARE(app.stored().waitingSubtitles, QStringList(app.path("y.srt")));
        app.sheet().cancelAll();
        app.queue().job(2)->remove();
        app.queue().job(1)->remove();
        // Only a finished one is left: the file starts anew.
        QTRY_COMPARE(files::contents(app.journal()), queuerecords::header());
        QVERIFY(app.confirm("after!.mkv"));
        QTRY_COMPARE(app.onDisk(), "after!.mkv:4");
    }

    void theNextSessionGoesOn() {
        Sessions app;
        setDefaultInt(kConcurrentJobsKey, 0);
        app.tool.setReport(
            FakeTool::report("    Stream #0:1(eng): Audio: ac3, 48000 Hz, stereo\n"
                             "    Stream #0:2(ger): Audio: dts, 48000 Hz, stereo\n"));
        app.write("busy~.srt");
        app.delegate.openFiles({app.path("busy~.srt")});
        for (const char* name : {"done.mkv", "bad!.mkv", "busy~.mkv", "gone.mkv", "last.mkv"}) {
            QVERIFY(app.open({name}));
            app.sheet().selectAudio(1);
            app.sheet().addToQueue();
        }
        QTRY_COMPARE_WITH_TIMEOUT(Sessions::list(app.delegate),
                                  "done.mkv:3 bad!.mkv:4 busy~.mkv:1 gone.mkv:0 last.mkv:0", kLongEnough);
        const QString reason = app.queue().job(1)->explanation().message;
        QFile::remove(app.path("gone.mkv"));
        QVERIFY(app.open({"waits.mkv"}));

        auto next = app.next();
        QCOMPARE(next->lastQueue().count(), 5);
        QCOMPARE(next->queue().count(), 0);  // Nothing starts by itself.
        // The movies of this session come first.
        next->openFiles({app.write("new~.mkv")});
        QTRY_VERIFY(!next->addSheet().informationString().isEmpty());
        next->addSheet().addToQueue();
        next->lastQueue().continueQueue();
        QCOMPARE(next->lastQueue().count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(Sessions::list(*next),
                                  "new~.mkv:1 bad!.mkv:4 busy~.mkv:0 gone.mkv:4 last.mkv:0", kLongEnough);
        QTRY_COMPARE(next->addSheet().path(), app.path("waits.mkv"));
        const JobQueue& queue = next->queue();
        QCOMPARE(queue.job(1)->explanation().message, reason);
        QCOMPARE(queue.job(1)->explanation().actions.front(), FailureAction::ChooseAnotherFolder);
        QCOMPARE(queue.job(2)->audioTrackIndex(), 1);
        QCOMPARE(queue.job(2)->fileInfo().subtitleFileURL, QUrl::fromLocalFile(app.path("busy~.srt")));
        QCOMPARE(queue.job(2)->queuedDestination(), app.path("busy~.mp4"));
        QVERIFY(queue.job(3)->explanation().message.contains("removed/renamed"));

        // A movie that is there again is probed first.
        next->failureActions().act(*queue.job(3), FailureAction::TryAgain);
        QTRY_VERIFY(app.status.contains("removed/renamed"));
        app.write("gone.mkv");
        next->failureActions().act(*queue.job(3), FailureAction::TryAgain);
        QTRY_COMPARE(queue.job(3)->state(), JobState::Queued);
        QCOMPARE(queue.job(3)->audioTrackIndex(), 1);
        QCOMPARE(queue.job(3)->fileInfo().audioTrackInformation.size(), 2);
        next->terminate(false);
        QCOMPARE(app.onDisk().section(" |", 0, 0), "new~.mkv:1 bad!.mkv:4 busy~.mkv:0 gone.mkv:0 last.mkv:0");
    }

    void theNewOrderIsStored_data() {
        addRows<QString, int, QString, int>({{"to the top", "e", 0, "e a b c d", 1},
                                             {"to the bottom", "a", 5, "b c d e a", 1},
                                             {"several", "d b", 5, "a c e b d", 2}});
    }
    void theNewOrderIsStored() {
        const auto [names, where, expected, records] = row<QString, int, QString, int>();
        Sessions app;
        app.queue().pauseContinueClicked(true);
        QList<ConversionJob*> jobs;
        for (const char* name : {"a", "b", "c", "d", "e"}) {
            QVERIFY(app.confirm(QString(name) + ".mkv"));
            if (names.contains(name)) jobs.append(app.queue().job(app.queue().count() - 1));
        }
        QTRY_COMPARE(app.stored().jobs.size(), 5U);
        app.queue().move(jobs, where);
        const QString list = QString(expected).replace(QRegularExpression("(\\w)"), "\\1.mkv:0");
        QTRY_COMPARE(app.onDisk(), list);
        QCOMPARE(files::contents(app.journal())->count("\"moved\""), records);
        auto next = app.next();
        next->lastQueue().continueQueue();
        QTRY_COMPARE(Sessions::list(*next), list);
    }

    void overridesComeBack() {
        Sessions app;
        app.queue().pauseContinueClicked(true);
        QVERIFY(app.confirm("bad!.mkv"));
        app.queue().pauseContinueClicked(true);
        QTRY_COMPARE(app.queue().jobCountWithState(JobState::Failed), 1);
        app.queue().pauseContinueClicked(true);
        app.delegate.failureActions().act(*app.queue().job(0), FailureAction::ConvertWhatIsLeft);
        auto next = app.next();
        next->lastQueue().continueQueue();
        QTRY_COMPARE(next->queue().count(), 1);
        QVERIFY(next->queue().job(0)->overrides().keepDamaged);
        QVERIFY(next->queue().isPaused());  // As it was.
        QCOMPARE(next->queue().job(0)->state(), JobState::Queued);
    }

    void aMovieOrItsPlaceHasChanged() {
        Sessions app;
        app.queue().pauseContinueClicked(true);
        app.tool.setReport(
            FakeTool::report("    Stream #0:1(eng): Audio: ac3, 48000 Hz, stereo\n"
                             "    Stream #0:2(ger): Audio: dts, 48000 Hz, stereo\n"));
        QDir(app.path()).mkpath("away");
        for (const char* name : {"a.mkv", "b.mkv", "c.mkv"}) {
            QVERIFY(app.open({name}));
            app.sheet().selectAudio(1);
            app.sheet().addToQueue();
        }
        app.queue().job(1)->setDestination(app.path("away/b.mp4"));
        Q_EMIT app.queue().job(1)->stateChanged(JobState::Failed, JobState::Queued);
        app.write("a.mp4", "of another program");
        QDir().rmdir(app.path("away"));
        app.tool.setReport(
            FakeTool::report("    Stream #0:1(ger): Audio: dts, 48000 Hz, stereo\n"
                             "    Stream #0:2(ger): Audio: dts, 48000 Hz, stereo\n"));
        auto next = app.next();
        next->lastQueue().continueQueue();
        QTRY_COMPARE(Sessions::list(*next), "a.mkv:0 b.mkv:4 c.mkv:0");
        QCOMPARE(next->queue().job(0)->queuedDestination(), app.path("a-0.mp4"));
        QVERIFY(
            next->queue().job(1)->explanation().message.startsWith("You don't seem to have write access"));
        QCOMPARE(next->queue().job(2)->audioTrackIndex(), 1);
    }

    void whatIsForgottenIsKeptOnce() {
        Sessions app;
        app.queue().pauseContinueClicked(true);
        QVERIFY(app.confirm("a.mkv"));
        QVERIFY(app.open({"b.mkv"}));
        auto next = app.next();
        QSignalSpy changed(&next->lastQueue(), &LastQueue::changed);
        next->lastQueue().forget();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(next->lastQueue().count(), 0);
        next->terminate(false);
        QCOMPARE(app.onDisk(), "");
        // Put back, it is offered again.
        QFile::remove(app.journal());
        QVERIFY(QFile::rename(app.folder() + "/forgotten.journal", app.journal()));
        QCOMPARE(app.next()->lastQueue().count(), 2);
    }

    void aSessionThatIgnoresTheLastOneKeepsIt() {
        Sessions app;
        app.queue().pauseContinueClicked(true);
        QVERIFY(app.confirm("a.mkv"));
        auto second = app.next();
        second->queue().pauseContinueClicked(true);
        second->openFiles({app.write("b.mkv")});
        QTRY_VERIFY(!second->addSheet().informationString().isEmpty());
        second->addSheet().addToQueue();
        second->terminate(false);
        QCOMPARE(app.onDisk(), "b.mkv:0 a.mkv:0");
    }

    void aDamagedStoreIsKeptAside() {
        Sessions app;
        app.queue().pauseContinueClicked(true);
        for (const char* name : {"a.mkv", "b.mkv"})
            QVERIFY(app.confirm(name));
        app.delegate.terminate(false);
        QByteArray bytes = files::contents(app.journal()).value();
        bytes.replace("a.mkv", "?.mkv");
        QFile file(app.journal());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        auto next = app.next();
        const QString aside = app.folder() + "/damaged.journal";
        QCOMPARE(app.status, "The stored queue was damaged. It is kept as '" + aside +
                                 "'; what could be read of it is used.");
        QCOMPARE(logged().size(), 1);
        QCOMPARE(next->lastQueue().count(), 1);
        QCOMPARE(files::contents(aside), bytes);
        next->terminate(false);
        QCOMPARE(app.onDisk(), "b.mkv:0");
    }

    void oneProcessStores() {
        Sessions app;
        app.queue().pauseContinueClicked(true);
        QVERIFY(app.confirm("a.mkv"));
        AppDelegate other(app.panels);
        other.applicationWillFinishLaunching();
        other.openFirstFiles({});
        QCOMPARE(other.lastQueue().count(), 0);
        QCOMPARE(logged().size(), 1);
        setDefaultInt(kAutoAddKey, 1);
        other.openFiles({app.write("b.mkv")});
        QTRY_COMPARE(other.queue().count(), 1);
        other.terminate(false);
        app.delegate.terminate(false);
        QCOMPARE(app.onDisk(), "a.mkv:0");
    }

    void aStoreThatCannotBeWritten() {
        Sessions app;
        app.queue().pauseContinueClicked(true);
        QDir(app.folder()).removeRecursively();
        app.write(QDir(app.path()).relativeFilePath(app.folder()), "a file in its place");
        QVERIFY(app.confirm("a.mkv"));
        QTRY_VERIFY(app.status.startsWith("The queue can't be saved in '" + app.journal() + "': "));
        QFile::remove(app.folder());
        QVERIFY(app.confirm("b.mkv"));
        QTRY_COMPARE(app.onDisk(), "a.mkv:0 b.mkv:0");  // Also what could not be written before.
    }

    void movedAlongWithTheApplication_data() {
        addRows<QString, QString, QString>({
            {"volume", "one/m/a.mkv", "two/x/app", "two/m/a.mkv"},
            {"beside it", "one/x/app/a.mkv", "two", "two/a.mkv"},
            {"still there", "one/b.mkv", "two/x/app", "one/b.mkv"},
            {"nowhere", "one/c.mkv", "two/x/app", "one/c.mkv"},
        });
    }
    void movedAlongWithTheApplication() {
        const auto [movie, applicationNow, expected] = row<QString, QString, QString>();
        const TestHome home;
        for (const char* there : {"two/a.mkv", "two/m/a.mkv", "one/b.mkv", "two/b.mkv"})
            home.write(there);
        QCOMPARE(movedAlong(home.path(movie), home.path("one/x/app"), home.path(applicationNow)),
                 home.path(expected));
    }
};

QTEST_GUILESS_MAIN(QueueStoreTest)
#include "tst_QueueStore.moc"
