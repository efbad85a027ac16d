#include "app/actions/JobMessages.h"
#include "convert/ConversionJob.h"
#include "convert/RunJournal.h"
#include "fakes/FakeController.h"
#include "fakes/FakeTool.h"
#include "fakes/InstantProof.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/base/Files.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"
#include "tool/ToolReaper.h"

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QStandardPaths>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool isAlive(qint64 process) {
    return ::kill(static_cast<pid_t>(process), 0) == 0;
}

/// The kernel's letter for the state of a process, such as T for stopped.
QChar processState(qint64 process) {
    QFile file(QString("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) return u'-';
    return QString::fromLatin1(file.readAll()).section(") ", -1).front();
}

/// A proof that ends when the test says so.
class FakeProof : public RunProof {
public:
    explicit FakeProof(QStringList& calls) : m_calls(calls) {}
    void start(const RunEnding& soFar, const QString& output, const QString&) override {
        m_calls.append("start");
        ending = soFar;
        hasOutput = QFile::exists(output);
    }

    RunEnding ending;
    bool hasOutput = false;

private:
    QStringList& m_calls;
};

/// A job with the fake tool.
struct Stage {
    Stage() : tool(home.path()) { remake(); }

    void remake(const QStringList& tracks = {"#1: eng (ac3)"}) {
        MKVFileInfo info;
        info.fileName = "movie.mkv";
        info.fileURL = QUrl::fromLocalFile(home.write("movie.mkv", "source"));
        info.destinationURL = QUrl::fromLocalFile(output);
        info.runtimeSeconds = 10;
        info.videoTrackCodec = "h264";
        for (const QString& track : tracks)
            info.audioTrackInformation.append({track, 48000});
        make(info);
    }

    void make(const MKVFileInfo& info) {
        job = std::make_unique<ConversionJob>(controller, info, 0);
        QObject::connect(job.get(), &ConversionJob::ended, job.get(),
                         [job = job.get()] { jobmessages::showEnding(*job); });
    }
    bool run() {
        job->start();
        return waitForEnd();
    }
    bool waitForEnd() {
        return QTest::qWaitFor(
            [&] { return job->state() == JobState::Finished || job->state() == JobState::Failed; }, 20000);
    }
    qint64 waitUntilItRuns() {
        const bool runs = QTest::qWaitFor([&] { return tool.process() > 0; }, 20000);
        return runs ? tool.process() : 0;
    }
    /// Runs the tool; the proof waits for the test.
    bool runUntilProof() {
        job->request().makeProof = [this] {
            auto made = std::make_unique<FakeProof>(proofCalls);
            proof = made.get();
            return made;
        };
        job->start();
        return QTest::qWaitFor([&] { return proofCalls.contains("start"); }, 20000);
    }
    QStringList progressFiles() const { return QDir(QuillonLib::shared().docDir()).entryList(QDir::Files); }

    TestHome home;
    FakeTool tool;
    FakeController controller;
    QStringList proofCalls;
    QPointer<FakeProof> proof;
    const QString output = home.path("movie.mp4");
    std::unique_ptr<ConversionJob> job;
};

}  // namespace

Q_DECLARE_METATYPE(ProofVerdict)

class ConversionJobTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void finishes() {
        Stage stage;
        QSignalSpy launched(stage.job.get(), &ConversionJob::launched);
        stage.tool.setConversion(
            "echo movie > \"$destination\"; [ -n \"$progress\" ] && echo out_time_ms=1 > \"$progress\"\n");
        stage.job->start();
        QCOMPARE(stage.job->state(), JobState::Converting);
        QCOMPARE(stage.home.desktop.held.size(), 1);
        QCOMPARE(stage.home.desktop.reasons, QStringList{"Converting MKV file."});
        QVERIFY(stage.waitForEnd());
        QCOMPARE(launched.count(), 1);
        QCOMPARE(stage.job->state(), JobState::Finished);
        QVERIFY(stage.job->finishedOK() && !stage.job->finishedError());
        QCOMPARE(stage.job->progress(), 100.0);
        QCOMPARE(stage.controller.calls, (QStringList{"unpause", "next", "count"}));
        QVERIFY(stage.home.desktop.held.isEmpty());
        QVERIFY(stage.progressFiles().isEmpty());
        QCOMPARE(defaultInt("convertedFileCount"), 1);
        QCOMPARE(defaultInt("Usages"), 1);
        const Notification told = stage.home.desktop.notifications.first();
        QCOMPARE(told.title, "Ravelin Conversion Finished");
        QCOMPARE(told.text, "Ravelin has finished converting the file movie.mkv.");
        QCOMPARE(told.path, stage.output);
        QCOMPARE(told.action, "Show");
        QCOMPARE(stage.tool.lastArguments(), stage.job->arguments());
        stage.job.reset();
        QVERIFY(QFile::exists(stage.output));
    }

    void endings_data() {
        addRows<QByteArray, QString, bool>(  // script, words of the output, whether it fails
            {{"exit status", "echo oops; exit 1", "oops", true},
             {"signal", "kill -KILL $$", "status: 9 reason: 2", true},
             {"says it is truncated", "echo out_time_ms=4000000 > $progress; echo 'File ended prematurely'",
              "SOURCE_TRUNCATED", true},
             {"writes nothing", "rm \"$destination\"", "OUTPUT_INCOMPLETE", true},
             {"says the disk is full", "echo 'Error closing file: No space left on device'",
              "No space left on device", true},
             {"last words without a line break", "printf 'it ends'; exit 1", "it ends", true},
             {"noisy success", "head -c 3000000 /dev/zero | tr '\\0' '\\n'; echo done", "done", false}});
    }
    void endings() {
        const auto [script, said, fails] = row<QByteArray, QString, bool>();
        Stage stage;
        stage.tool.setConversion("echo movie > \"$destination\"\n" + script + "\n");
        QVERIFY(stage.run());
        QCOMPARE(stage.job->state(), fails ? JobState::Failed : JobState::Finished);
        QCOMPARE(stage.job->finishedError(), fails);
        QVERIFY2(stage.job->jobOutput().contains(said), qPrintable(stage.job->jobOutput()));
        QCOMPARE(QFile::exists(stage.output), !fails);
        QVERIFY(stage.progressFiles().isEmpty());
        QVERIFY(stage.home.desktop.held.isEmpty());
        QCOMPARE(defaultInt("Usages"), 1);
        if (!fails) return;
        QCOMPARE(stage.home.presenter.shown.size(), said.startsWith("No space") ? 1 : 0);
        QCOMPARE(stage.home.desktop.notifications.first().title, "Ravelin Conversion Failed");
        QVERIFY(stage.home.desktop.notifications.first().action.isEmpty());
    }

    void toolIsMissing() {
        Stage stage;
        qputenv("RAVELIN_RESOURCES", stage.home.path("nowhere").toUtf8());
        QVERIFY(stage.run());
        QCOMPARE(stage.job->state(), JobState::Failed);
        QVERIFY(stage.job->explanation().message.contains("the conversion tool could not be started"));
        QVERIFY(stage.controller.calls.contains("next"));
    }

    void sourceIsGone() {
        Stage stage;
        QFile::remove(stage.home.path("movie.mkv"));
        stage.job->start();
        QCOMPARE(stage.job->state(), JobState::Failed);
        QCOMPARE(stage.job->jobOutput(), "USER_REMOVED");
        QVERIFY(stage.job->finishedError());
        QCOMPARE(stage.home.presenter.keys(), QStringList{"warningremoved"});
        QVERIFY(!QFile::exists(stage.tool.runningMark()));
        QVERIFY(stage.home.desktop.held.isEmpty());
    }

    void volumeIsTooSmall() {
        Stage stage;
        MKVFileInfo info = stage.job->fileInfo();
        info.fileSize = std::numeric_limits<quint64>::max();
        stage.make(info);
        stage.job->start();
        QCOMPARE(stage.job->state(), JobState::Failed);
        QCOMPARE(stage.job->jobOutput(), "FREE_SPACE");
        QVERIFY(!stage.job->finishedError());
        QCOMPARE(stage.home.presenter.messages(),
                 QStringList{"There is not enough free space on your target disk for conversion."});
        QVERIFY(stage.home.desktop.held.isEmpty());
    }

    void removedWhileItRuns_data() {
        const QByteArray busy = FakeTool::waitFor("/never");
        addRows<QByteArray, bool>({{"running", busy, false},
                                   {"paused", busy, true},
                                   {"writes once more when told to end",
                                    "trap 'echo more > \"$destination\"; exit 255' TERM; " + busy, false},
                                   {"ignores being told to end", "trap '' TERM; " + busy, false}});
    }
    void removedWhileItRuns() {
        const auto [script, paused] = row<QByteArray, bool>();
        Stage stage;
        stage.tool.setConversion(script + "\n");
        stage.job->start();
        const qint64 process = stage.waitUntilItRuns();
        QVERIFY(process > 0);
        QTRY_VERIFY(QFile::exists(stage.output));
        if (paused) {
            stage.job->pause();
            QTRY_COMPARE_WITH_TIMEOUT(processState(process), u'T', 20000);
        }
        stage.job->remove();
        QCOMPARE(stage.controller.calls.last(2), (QStringList{"remove", "next"}));
        QTRY_VERIFY_WITH_TIMEOUT(ToolReaper::shared().isIdle(), 20000);
        QVERIFY(!isAlive(process));
        QVERIFY(!QFile::exists(stage.output));
        QVERIFY(stage.progressFiles().isEmpty());
        QVERIFY(QFile::exists(stage.home.path("movie.mkv")));
        QCOMPARE(defaultInt("Usages"), 0);  // No message besides the removal.
    }

    void readsProgressPausesAndContinues() {
        Stage stage;
        stage.tool.setConversion("echo out_time_ms=2500000 > \"$progress\"\n" +
                                 FakeTool::waitFor(stage.home.path("go")) + "exit 0\n");
        QSignalSpy progressed(stage.job.get(), &ConversionJob::progressed);
        stage.job->start();
        QTRY_COMPARE_WITH_TIMEOUT(stage.job->progress(), 25.0, 20000);
        QVERIFY(progressed.count() > 0);
        QVERIFY(stage.job->stateInfoString().startsWith("Status: Converting   Audio:  eng (ac3)   ETA: "));
        stage.job->pause();
        QCOMPARE(stage.job->state(), JobState::Paused);
        QVERIFY(stage.home.desktop.held.isEmpty());
        stage.job->continueJob();
        QCOMPARE(stage.job->state(), JobState::Converting);
        QCOMPARE(stage.home.desktop.held.size(), 1);
        QCOMPARE(stage.controller.calls.last(), "unpause");
        stage.home.write("go");
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.job->state(), JobState::Finished);
    }

    void trialRunDecidesOnTheFilter() {
        for (const auto& [said, filter] :
             {std::pair("use 'aac_adtstoasc' to fix it", true), {"fine", false}}) {
            Stage stage;
            stage.remake({"#1: eng (aac)"});
            stage.tool.setTrial(said);
            // The output of the trial run is not mistaken for the movie.
            stage.tool.setConversion("exit 0\n");
            stage.job->start();
            QCOMPARE(stage.job->arguments().contains("-absf"), filter);
            QVERIFY(stage.job->fastmode());
            QVERIFY(stage.waitForEnd());
            QCOMPARE(stage.job->state(), JobState::Failed);
        }
    }

    void nobodysFileIsLost_data() {
        addRows<bool, bool, QStringList>(  // may replace, fails, files in the end
            {{"a file that came meanwhile", false, false, {"movie-0.mp4", "movie.mp4"}},
             {"a failure beside it", false, true, {"movie.mp4"}},
             {"a file that the user named", true, false, {"movie.mp4"}},
             {"a failure to replace it", true, true, {"movie.mp4"}}});
    }
    void nobodysFileIsLost() {
        const auto [mayReplace, fails, left] = row<bool, bool, QStringList>();
        Stage stage;
        if (fails) stage.tool.setConversion("echo half > \"$destination\"; exit 1\n");
        stage.job->setMayReplaceDestination(mayReplace);
        stage.home.write("movie.mp4", "somebody's");
        QVERIFY(stage.job->destinationIsWriteable() == mayReplace);
        if (fails) {
            stage.job->remove();  // A job that never ran deletes nothing.
            QVERIFY(QFile::exists(stage.output));
            stage.remake();
            stage.job->setMayReplaceDestination(mayReplace);
        }
        QVERIFY(stage.run());
        QCOMPARE(files::contents(stage.output).value(),
                 mayReplace && !fails ? QByteArray("movie\n") : QByteArray("somebody's"));
        QCOMPARE(QDir(stage.home.path()).entryList({"*movie*mp4*"}, QDir::Files | QDir::Hidden), left);
    }

    void aCrashIsCleanedUpAfter_data() {
        using Change = void (*)(const Stage&);
        const Change nothing = [](const Stage&) {};
        // still runs, what happens then, the output and what is beside it after the next start
        addRows<bool, Change, QByteArray, QByteArray>(
            {{"half-written output", false, nothing, "old", ""},
             {"a run of another instance", true, nothing, "half a mov", ""},
             {"another clock", false,
              [](const Stage& stage) {
                  QFile file(stage.output);
                  QVERIFY(file.open(QIODevice::ReadWrite));
                  file.setFileTime(QDateTime::currentDateTime().addSecs(60),
                                   QFileDevice::FileModificationTime);
              },
              "old", ""},
             {"a file that somebody moved there", false,
              [](const Stage& stage) {
                  stage.home.write("new", "mine");
                  QVERIFY(QFile::remove(stage.output) && QFile::rename(stage.home.path("new"), stage.output));
              },
              "mine", "old"},
             {"an output that somebody deleted", false,
              [](const Stage& stage) { QVERIFY(QFile::remove(stage.output)); }, "old", ""}});
    }
    void aCrashIsCleanedUpAfter() {
        const auto [stillRuns, happens, left, beside] =
            row<bool, void (*)(const Stage&), QByteArray, QByteArray>();
        Stage stage;
        stage.home.write("movie.mp4", "old");
        int pipe[2];
        QCOMPARE(::pipe(pipe), 0);
        const pid_t instance = ::fork();
        if (instance == 0) {
            RunJournal journal;
            journal.claim({stage.output, true, {}, QuillonLib::shared().docDir() + "/movie.mkv.log"});
            stage.home.write("movie.mp4", "half a mov");
            ::write(pipe[1], "x", 1);
            ::pause();
        }
        char byte = 0;
        QCOMPARE(::read(pipe[0], &byte, 1), 1);
        if (!stillRuns) {
            ::kill(instance, SIGKILL);
            ::waitpid(instance, nullptr, 0);
        }
        happens(stage);
        for (int starts = 0; starts < 2; ++starts) {
            RunJournal::cleanUpAfterCrashes();
            QCOMPARE(files::contents(stage.output).value(), left);
            QCOMPARE(files::contents(stage.home.path("movie-0.mp4")).value_or(""), beside);
            QCOMPARE(stage.progressFiles().isEmpty(), !stillRuns);
        }
        if (!stillRuns) return;
        ::kill(instance, SIGKILL);
        ::waitpid(instance, nullptr, 0);
    }

    void unfinishedMovesToTheTrash_data() {
        // What has become of the movie, and of its information.
        addRows<bool, QByteArray>({{"linked", true, {}},
                                   {"linked, with its information", true, "[Trash Info]\nPath=PATH\n"},
                                   {"renamed", false, {}},
                                   {"renamed, with empty information", false, ""}});
    }
    void unfinishedMovesToTheTrash() {
        const auto [isLinked, information] = row<bool, QByteArray>();
        const TestHome home;
        home.write("movie 1.mkv", "a movie");
        const QString source = home.path("movie 1.mkv");
        const QString trash =
            QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Trash";
        home.write("other", "no movie");
        QVERIFY(QDir().mkpath(trash + "/files") && QDir().mkpath(trash + "/info"));
        QVERIFY(QFile::rename(home.path("other"), trash + "/files/1 other"));
        // Somebody's.
        QVERIFY(QFile::link(source, trash + "/files/2 pointer"));
        QFile thrownAway(trash + "/info/3 link.trashinfo");
        QVERIFY(::link(source.toUtf8().constData(), (trash + "/files/3 link").toUtf8().constData()) == 0);
        QVERIFY(thrownAway.open(QIODevice::WriteOnly) && thrownAway.write("[Trash Info]\nPath=/a.mkv\n") > 0);
        thrownAway.close();
        const pid_t instance = ::fork();
        if (instance == 0) {
            RunJournal::moveToTrash(source, [&] {
                const std::string moved = (trash + "/files/aBcDeF").toStdString();
                (isLinked ? ::link : ::rename)(source.toUtf8().constData(), moved.c_str());
                QByteArray text = information;
                QFile file(trash + "/info/movie 1.mkv.trashinfo");
                if (!information.isNull() && file.open(QIODevice::WriteOnly))
                    file.write(text.replace("PATH", source.toUtf8().replace(" ", "%20")));
                file.close();
                ::_exit(0);
                return true;
            });
        }
        ::waitpid(instance, nullptr, 0);
        RunJournal::cleanUpAfterCrashes();
        QCOMPARE(files::contents(source).value(), "a movie");
        QCOMPARE(QDir(trash + "/files").entryList(QDir::Files),
                 (QStringList{"1 other", "2 pointer", "3 link"}));
        QCOMPARE(QDir(trash + "/info").entryList(QDir::Files), QStringList("3 link.trashinfo"));
    }

    void theProofDecides_data() {
        addRows<RunEnding::Kind, bool>(
            {{"whole", RunEnding::Kind::Succeeded, true}, {"much lost", RunEnding::Kind::MuchLost, false}});
    }
    void theProofDecides() {
        const auto [kind, kept] = row<RunEnding::Kind, bool>();
        Stage stage;
        stage.home.write("movie.mp4", "somebody's");
        stage.job->setMayReplaceDestination(true);
        QVERIFY(stage.runUntilProof());
        QVERIFY(stage.proof->hasOutput);
        QCOMPARE(stage.job->state(), JobState::Converting);
        QCOMPARE(stage.job->progress(), 100.0);
        QCOMPARE(stage.controller.calls, QStringList{"unpause"});
        QVERIFY(stage.home.desktop.notifications.isEmpty());
        stage.proof->ending.kind = kind;
        Q_EMIT stage.proof->finished(stage.proof->ending);
        QTRY_COMPARE(stage.job->state(), kept ? JobState::Finished : JobState::Failed);
        QCOMPARE(files::contents(stage.output).value(), QByteArray(kept ? "movie\n" : "somebody's"));
        QCOMPARE(stage.home.desktop.notifications.size(), 1);
        QCOMPARE(stage.controller.calls, (QStringList{"unpause", "next", "count"}));
        QTRY_VERIFY(!stage.proof);
    }

    void removedDuringTheProof_data() {
        addRows<bool, bool>({{"running", false, false}, {"paused", true, false}, {"ended", true, true}});
    }
    void removedDuringTheProof() {
        const auto [paused, proofEnded] = row<bool, bool>();
        Stage stage;
        QVERIFY(stage.runUntilProof());
        if (paused) stage.job->pause();
        if (proofEnded) Q_EMIT stage.proof->finished({});
        QCOMPARE(stage.job->state(), paused ? JobState::Paused : JobState::Converting);
        stage.job->remove();
        QTRY_VERIFY(!stage.proof);
        QVERIFY(!QFile::exists(stage.output));
        QVERIFY(stage.progressFiles().isEmpty());
        QVERIFY(stage.home.desktop.held.isEmpty() && stage.home.desktop.notifications.isEmpty());
        QCOMPARE(defaultInt("Usages"), 0);
    }

    void pausedDuringTheProof() {
        Stage stage;
        QVERIFY(stage.runUntilProof());
        stage.job->pause();
        Q_EMIT stage.proof->finished({});
        QCOMPARE(stage.job->state(), JobState::Paused);
        stage.job->continueJob();
        QCOMPARE(stage.job->state(), JobState::Finished);
        QVERIFY(QFile::exists(stage.output));
        QVERIFY(stage.home.desktop.held.isEmpty());
    }

    void remedies_data() {
        addRows<QByteArray, QStringList, bool>(  // what the tool does, the remedies offered in turn, failure
            {{"helps", "case \"$*\" in *second*) echo movie > $destination;; *) exit 1;; esac", {"a"}, false},
             {"does not help", "exit 1", {"a"}, true},
             {"the next one helps",
              "case \"$*\" in *third*) echo movie > $destination;; *) exit 1;; esac",
              {"a", "b"},
              false},
             {"the same again", "exit 1", {"a", "a"}, true}});
    }
    void remedies() {
        const auto [script, offered, fails] = row<QByteArray, QStringList, bool>();
        Stage stage;
        stage.tool.setConversion("echo half > \"$destination\"; echo \"got $*\" >&2; echo run >> " +
                                 stage.home.path("runs").toUtf8() + "; " + script + "\n");
        QStringList left = offered;
        stage.job->request().remedy = [&](const RunEnding& ending, const QString&) -> std::optional<Remedy> {
            if (ending.succeeded() || left.isEmpty()) return std::nullopt;
            const char* word = left.size() == offered.size() ? "second" : "third";
            return Remedy{left.takeFirst(), {}, [word](const RunContext& context) {
                              return QStringList{word, "-progress", context.progressFile, context.output};
                          }};
        };
        QSignalSpy launched(stage.job.get(), &ConversionJob::launched);
        QSignalSpy ended(stage.job.get(), &ConversionJob::ended);
        QVERIFY(stage.run());
        QCOMPARE(stage.job->state(), fails ? JobState::Failed : JobState::Finished);
        // A second failure is reported as the first one was.
        if (fails) QVERIFY(stage.job->jobOutput().startsWith("got -"));
        QCOMPARE(launched.count(), 1);
        QCOMPARE(ended.count(), 1);
        QCOMPARE(stage.home.desktop.notifications.size(), 1);
        QCOMPARE(defaultInt("Usages"), 1);
        QSet<QString> applied(offered.cbegin(), offered.cend());
        QCOMPARE(files::contents(stage.home.path("runs"))->count('\n'), 1 + applied.size());
        QCOMPARE(QFile::exists(stage.output), !fails);
        QVERIFY(stage.progressFiles().isEmpty());
    }

    void disposesOfTheSource_data() {
        using enum ProofVerdict;
        addRows<bool, int, ProofVerdict>({{"to trash", true, 0, Whole},
                                          {"for good", true, 1, Whole},
                                          {"not if it is damaged", false, 1, Damaged},
                                          {"not if it was not compared", false, 1, Unknown},
                                          {"not after a failure", false, 1, Whole}});
    }
    void disposesOfTheSource() {
        const auto [goes, type, verdict] = row<bool, int, ProofVerdict>();
        Stage stage;
        Receipt receipt;
        receipt.verdict = verdict;
        proveWith(*stage.job, receipt);
        setDefaultInt(kAutoRemoveKey, 1);
        setDefaultInt(kAutoRemoveTypeKey, type);
        if (verdict == ProofVerdict::Whole && !goes) stage.tool.setConversion("exit 1\n");
        QVERIFY(stage.run());
        QCOMPARE(QFile::exists(stage.home.path("movie.mkv")), !goes || type == 0);
        QCOMPARE(stage.home.desktop.trashed.size(), goes && type == 0 ? 1 : 0);
    }

    void cleansUpAndQuits() {
        Stage stage;
        setDefaultInt(kAutoCleanKey, 1);
        setDefaultInt(kQuitAfterConversionKey, 1);
        QSignalSpy quit(stage.job.get(), &ConversionJob::quitRequested);
        QVERIFY(stage.run());
        QCOMPARE(stage.controller.calls, (QStringList{"unpause", "remove", "next", "next", "count"}));
        QVERIFY(QFile::exists(stage.output));
        QCOMPARE(quit.count(), 1);
        stage.controller.counts = {{4, 1}};
        stage.remake();
        QFile::remove(stage.output);
        QSignalSpy notNow(stage.job.get(), &ConversionJob::quitRequested);
        QVERIFY(stage.run());
        QCOMPARE(notNow.count(), 0);
    }
};

QTEST_GUILESS_MAIN(ConversionJobTest)
#include "tst_ConversionJob.moc"
