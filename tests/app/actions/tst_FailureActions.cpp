#include "app/actions/FailureActions.h"
#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "app/queue/QueueProgress.h"
#include "fakes/FakeTool.h"
#include "fakes/OpenedMail.h"
#include "fakes/RecordingPanels.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Settings.h"
#include "tool/ToolReaper.h"

#include <QDir>
#include <QSignalSpy>

namespace {

using enum FailureAction;

class NothingWaiting : public WaitingFiles {
public:
    bool areWaiting() const override { return false; }
    void cancelAdd() override {}
};

/// A queue whose only job fails unless a test lets it succeed.
struct Stage {
    Stage() : tool(home.path()) {
        settings::DisableBuiltinSubtitles.setValue(false);
        tool.setConversion("echo 'strange words: A & B #1.mp4'; exit 1\n");
    }
    ~Stage() {
        queue.removeAll();
        [[maybe_unused]] const bool idle =
            QTest::qWaitFor([] { return ToolReaper::shared().isIdle(); }, 10000);
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Subtitles: "m" in the movie, "f" in a file beside it.
    bool run(const QString& subtitles = {}) {
        MKVFileInfo info;
        info.fileName = "movie.mkv";
        info.fileURL = QUrl::fromLocalFile(home.write("movie.mkv", "source"));
        info.destinationURL = QUrl::fromLocalFile(home.path("movie.mp4"));
        info.runtimeSeconds = 10;
        info.audioTrackInformation = {{"#1: eng (ac3)", 48000}};
        if (subtitles.contains(u'm')) info.subtitleTrackIDs = {2};
        if (subtitles.contains(u'f')) info.subtitleFileURL = QUrl::fromLocalFile(home.write("movie.srt"));
        if (!queue.addJob(std::make_unique<ConversionJob>(queue, info, 0))) return false;
        job = queue.job(0);
        return waitForEnd();
    }
    bool waitForEnd() {
        return QTest::qWaitFor([&] { return !statusNotFinished(job->state()); }, 20000);
    }
    void letSucceed() const { tool.setConversion("echo movie > \"$destination\"\n"); }
    QString said() const { return tool.lastArguments().join(u' '); }

    TestHome home;
    FakeTool tool;
    RecordingPanels panels;
    NothingWaiting waiting;
    JobQueue queue{waiting};
    QueueProgress progress{queue};
    FailureActions actions{queue, panels};
    ConversionJob* job = nullptr;
};

}  // namespace

class FailureActionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void opensFinishedJobs() {
        Stage stage;
        stage.letSucceed();
        QVERIFY(stage.run());
        stage.actions.reveal(*stage.job, false);
        stage.actions.reveal(*stage.job, true);
        QCOMPARE(stage.home.desktop.revealed,
                 (QStringList{stage.home.path("movie.mp4"), stage.home.path("movie.mkv")}));
        stage.actions.act(*stage.job, TryAgain);
        QCOMPARE(stage.job->state(), JobState::Finished);
    }

    void offers_data() {
        addRows<QByteArray, QString, QStringList>(
            {{"unknown", "exit 1", "", {"Send to support", "Cancel", "Try Again"}},
             {"full",
              "echo No space left on device; exit 1",
              "",
              {"OK", "Choose Another Folder…", "Try Again"}},
             {"own subtitles", "exit 1", "m", {"OK", "Without Embedded Subtitles", "Show the Preference"}},
             {"subtitle file", "exit 1", "f", {"OK", "Read Subtitles As…", "Without Subtitle File"}},
             {"no remedy",
              "echo 'track 0: could not find tag, codec not currently supported in container'",
              "",
              {"OK"}}});
    }
    void offers() {
        const auto [script, subtitles, buttons] = row<QByteArray, QString, QStringList>();
        Stage stage;
        stage.tool.setConversion(script + "; exit 1\n");
        QVERIFY(stage.run(subtitles));
        stage.actions.reveal(*stage.job, false);
        const Alert& shown = stage.home.presenter.shown.last();
        QStringList titles;
        for (const AlertButton& button : shown.buttons)
            titles.append(button.title);
        QCOMPARE(titles, buttons);
        QCOMPARE(shown.subject, "Movie: movie.mkv");
        QCOMPARE(shown.message, stage.job->explanation().message);
        // Escape does nothing.
        QCOMPARE(stage.job->state(), JobState::Failed);
        QVERIFY(stage.home.desktop.opened.isEmpty());
    }

    void acts_data() {
        const QString subtitles = "-map 1:0";
        addRows<FailureAction, QString, QString,
                QString>(  // action, argument, then in the arguments, and not
            {{"again", TryAgain, "", subtitles, "-sub_charenc"},
             {"no file", WithoutSubtitleFile, "", "-map 0:2", subtitles},
             {"no own ones", WithoutEmbeddedSubtitles, "", subtitles, "-map 0:2"},
             {"encoding", ReadSubtitlesAs, "CP1251", "-sub_charenc CP1251", "UTF"},
             {"what is left", ConvertWhatIsLeft, "", subtitles, "-sub_charenc"},
             {"folder", ChooseAnotherFolder, "other", "other/movie.mp4", "-sub_charenc"}});
    }
    void acts() {
        const auto [action, argument, expected, unexpected] = row<FailureAction, QString, QString, QString>();
        Stage stage;
        QVERIFY(stage.run("mf"));
        QDir(stage.home.path()).mkdir("other");
        const auto before = settings::Snapshot::current();
        if (action == ConvertWhatIsLeft) {
            stage.tool.setConversion(
                "echo half > \"$destination\"; echo 'File ended prematurely'; echo out_time_ms=1 > $progress\n");
        } else {
            stage.letSucceed();
        }
        stage.actions.act(*stage.job, action,
                          action == ChooseAnotherFolder ? stage.home.path(argument) : argument);
        QCOMPARE(stage.job->state(), JobState::Converting);
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.job->state(), JobState::Finished);
        QVERIFY2(stage.said().contains(expected), qPrintable(stage.said()));
        QVERIFY2(!stage.said().contains(unexpected), qPrintable(stage.said()));
        QVERIFY(QFile::exists(stage.job->fileInfo().destinationURL.toLocalFile()));
        QCOMPARE(settings::ExternalSubtitleEncoding.value(), SubtitleEncoding{});
        QVERIFY(!settings::DisableBuiltinSubtitles.value());
        QCOMPARE(stage.queue.count(), 1);
    }

    void asksWhatItNeeds() {
        Stage stage;
        QVERIFY(stage.run("f"));
        stage.home.presenter.answer = {.response = kAlertFirstButton, .suppressed = false, .value = 1};
        stage.letSucceed();
        stage.actions.act(*stage.job, ReadSubtitlesAs);
        QCOMPARE(stage.home.presenter.shown.last().items.first(), "Automatic (UTF-8 or UTF-16)");
        QVERIFY(stage.waitForEnd());
        QVERIFY(stage.said().contains("-sub_charenc UTF-8"));
    }

    void aFolderThatCannotBeWritten() {
        Stage stage;
        QVERIFY(stage.run());
        stage.actions.act(*stage.job, ChooseAnotherFolder);  // The panel is cancelled.
        QCOMPARE(stage.panels.requests.last().startingIn, stage.home.path());
        stage.panels.folder = "/proc";
        stage.actions.act(*stage.job, ChooseAnotherFolder);
        QVERIFY(stage.home.presenter.messages().last().contains("write access"));
        QCOMPARE(stage.job->state(), JobState::Failed);
        QVERIFY(stage.queue.uniqueDestination(stage.home.path("movie.mp4")).endsWith("movie-0.mp4"));
        stage.actions.act(*stage.job, ReadSubtitlesAs, "CP0");
        QCOMPARE(stage.home.presenter.messages().last(), "There is no encoding “CP0”.");
        QCOMPARE(stage.job->state(), JobState::Failed);
    }

    void waitsForItsTurn() {
        Stage stage;
        QVERIFY(stage.run());
        stage.letSucceed();
        stage.queue.pauseContinueClicked(true);
        stage.actions.act(*stage.job, TryAgain);
        QCOMPARE(stage.job->state(), JobState::Queued);
        QVERIFY(stage.job->jobOutput().isEmpty());
        QCOMPARE(stage.job->progress(), 0.0);
        QCOMPARE(stage.progress.fraction(), 0.0);
        stage.queue.pauseContinueClicked(true);
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.job->state(), JobState::Finished);
        QVERIFY(!stage.progress.fraction());
    }

    void theJobIsRemovedMeanwhile() {
        Stage stage;
        QVERIFY(stage.run());
        stage.home.presenter.whileShown = [&] {
            stage.job->remove();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        stage.home.presenter.answer.response = kAlertThirdButton;  // Try again.
        stage.actions.reveal(*stage.job, false);
        QCOMPARE(stage.queue.count(), 0);
    }

    void showsThePreference() {
        Stage stage;
        QVERIFY(stage.run("m"));
        QSignalSpy requested(&stage.actions, &FailureActions::preferenceRequested);
        stage.home.presenter.answer.response = kAlertThirdButton;
        stage.actions.reveal(*stage.job, false);
        QCOMPARE(requested.value(0).value(0).toString(), "DisableBuiltinSubtitles");
        QCOMPARE(stage.job->state(), JobState::Failed);
    }

    void sendsToSupport() {
        Stage stage;
        QVERIFY(stage.run());
        stage.home.presenter.answer.response = kAlertSecondButton;
        stage.actions.reveal(*stage.job, false);
        QVERIFY(stage.home.desktop.opened.isEmpty());
        stage.home.presenter.answer.response = kAlertFirstButton;
        stage.actions.reveal(*stage.job, false);
        const OpenedMail mail(stage.home.desktop.opened.first());
        QCOMPARE(mail.subject, "Ravelin v1.0.0 Problem Report");
        QVERIFY(mail.body.startsWith("Hello\nConversion of a file failed.") &&
                mail.body.contains("strange words: A & B #1.mp4"));
        QVERIFY(mail.body.contains("\nfileName: movie.mkv\n"));
        QVERIFY(QByteArray::fromBase64(mail.body.section("Preferences: ", 1).toLatin1()).startsWith('{'));
        QVERIFY(stage.home.presenter.shown.last().value.toString().contains("Preferences: {"));
    }
};

QTEST_GUILESS_MAIN(FailureActionsTest)
#include "tst_FailureActions.moc"
