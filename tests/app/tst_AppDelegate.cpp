#include "fakes/LaunchedApplication.h"
#include "fakes/Table.h"
#include "feedback/PXRatingWindowController.h"
#include "support/store/FolderAccess.h"

#include <QSignalSpy>

namespace {

constexpr int kLongEnough = 30000;

using Launched = LaunchedApplication;

}  // namespace

class AppDelegateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theRoadOfOneMovie() {
        Launched app;
        app.tool.setReport(
            FakeTool::report("    Stream #0:1(eng): Audio: ac3, 48000 Hz, stereo\n"
                             "    Stream #0:2(ger): Audio: aac, 48000 Hz, stereo\n"));
        setDefaultInt(kDefaultAudioKey, 3);  // German
        setDefaultInt("quillonlib_1.0.0_usages", 19);
        QString question;
        connect(&app.delegate, &AppDelegate::ratingWindowRequested,
                [&](const PXRatingWindowController& asked) { question = asked.introText(); });
        QSignalSpy front(&app.delegate, &AppDelegate::mainWindowRequested);
        app.delegate.openFiles({app.write("Trip.mkv")});
        QCOMPARE(front.count(), 1);
        QVERIFY(app.sheet().isShown() && app.sheet().isScanning());
        QCOMPARE(app.sheet().topConstraint(), 117.0);
        QTRY_VERIFY(app.isReady());
        QCOMPARE(app.sheet().audioItems().size(), 2);
        QCOMPARE(app.sheet().selectedAudio(), 1);

        app.panels.savedAs = app.path("other/Trip.mp4");
        QDir(app.path()).mkpath("other");
        app.sheet().selectAudio(0);
        app.sheet().addToQueue();
        const RecordingPanels::Request& asked = app.panels.requests.last();
        QCOMPARE(asked.kind + ' ' + asked.fileName, "save Trip.mp4");
        QCOMPARE(asked.startingIn, app.path());
        QVERIFY(!app.sheet().isShown());
        QCOMPARE(app.queue().job(0)->audioTrackIndex(), 0);
        QVERIFY(app.desktop.launcherProgress.has_value());
        QTRY_COMPARE(app.queue().job(0)->state(), JobState::Finished);
        QVERIFY(QFile::exists(app.path("other/Trip.mp4")));
        QVERIFY(!app.desktop.launcherProgress);
        QCOMPARE(defaultInt("quillonlib_usages"), 1);
        QCOMPARE(question,
                 "You have now used Ravelin more than 20 times, successfully converting 1 MKVs to MP4s.");
    }

    void nothingStartsBeforeTheLastFileWasHandled() {
        Launched app;
        app.putOutputsNextToSource();
        for (const char* name : {"in/a.mkv", "in/deep/b.avi", "in/c.mkv", "in/notes.txt"})
            app.write(name);
        app.delegate.openFiles({app.path("in")});
        for (const int waiting : {2, 1}) {
            QTRY_VERIFY(app.isReady());
            QCOMPARE(app.sheet().waitingCount(), waiting);
            app.sheet().addToQueue();
        }
        QCOMPARE(app.queue().jobCountWithState(JobState::Queued), 2);
        QTRY_VERIFY(app.isReady());
        app.sheet().cancelAdd();
        QVERIFY(!app.sheet().isShown());
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 2, kLongEnough);
    }

    void nextToTheSourceNeedsAnOpenedFolderInASandbox() {
        Launched app(Launched::Starts::Later);
        app.desktop.sandboxed = true;
        app.delegate.applicationWillFinishLaunching();
        setDefaultInt(kDefaultDestinationKey, Launched::kNextToSource);
        QVERIFY(app.open({"a.mkv"}));
        app.sheet().addToQueue();  // The panel is cancelled.
        QVERIFY(app.presenter.messages().last().startsWith("You've chosen the 'Next to' default"));
        QCOMPARE(app.panels.requests.last().startingIn, app.path());
        QVERIFY(app.sheet().isShown());

        app.panels.folder = app.path("elsewhere");
        app.sheet().addToQueue();
        QVERIFY(app.presenter.messages().last().startsWith("You did not seem to select a folder"));
        QCOMPARE(app.queue().count(), 0);

        app.panels.folder = app.path();
        app.write("a.mp4");
        app.sheet().addToQueue();
        QCOMPARE(app.outputOf(0), app.path("a-0.mp4"));
        QCOMPARE(app.panels.requests.size(), 3);
    }

    void aStoredFolderIsOpenAsLongAsItsJob() {
        Launched app(Launched::Starts::Later);
        QDir(app.path()).mkpath("out");
        app.storeFolder("out");
        app.delegate.applicationWillFinishLaunching();
        app.queue().pauseContinueClicked(true);
        QVERIFY(app.confirm("a.mkv"));
        QCOMPARE(app.outputOf(0), app.path("out/a.mp4"));
        QCOMPARE(folderaccess::openAccesses(app.path("out")), 1);
        app.queue().job(0)->remove();
        QCOMPARE(folderaccess::openAccesses(app.path("out")), 0);

        // Unplugged meanwhile: it is reported, and the movie stays on the sheet for another choice.
        QVERIFY(app.open({"b.mkv"}));
        QDir().rmdir(app.path("out"));
        app.sheet().addToQueue();
        QVERIFY(app.presenter.messages().last().contains(app.path("out")));
        QVERIFY(app.isReady());
        app.popUp().select(0);
        app.saveAs(app.path("b.mp4"));
        QCOMPARE(app.queue().count(), 1);
    }

    void whatTheSavePanelNames() {
        Launched app;
        app.queue().pauseContinueClicked(true);
        QVERIFY(app.open({"a.mp4"}));
        app.write("a-0.mp4");
        app.saveAs(app.path("a.mp4"));
        QCOMPARE(app.panels.requests.last().fileName, "a-1.mp4");  // Not the source's own.
        QVERIFY(app.presenter.messages().last().startsWith("You've tried to overwrite the source file"));
        QCOMPARE(app.presenter.shown.last().buttons.front().title, "D'oh");
        QCOMPARE(app.queue().count(), 0);

        // A second job for the planned output of the first one gets a free name.
        app.saveAs(app.path("out.mp4"));
        QVERIFY(app.confirm("b.mkv"));
        QCOMPARE(app.outputOf(1), app.path("out.mp4"));
        QCOMPARE(app.outputOf(0), app.path("out-0.mp4"));
        // So does one that is added while the first is written, even if the panel asked whether to replace.
        app.tool.setConversion(FakeTool::waitFor(app.path("never")));
        app.queue().job(1)->start();
        QVERIFY(QFile::exists(app.path("out.mp4")));
        QVERIFY(app.confirm("c.mkv"));
        QCOMPARE(app.outputOf(0), app.path("out-1.mp4"));
    }

    void aRefusedMovieStays_data() { addRows<bool>({{"confirmed", false}, {"without asking", true}}); }
    void aRefusedMovieStays() {
        const auto [autoAdd] = row<bool>();
        Launched app;
        app.presenter.waits = true;
        setDefaultInt(kAutoAddKey, autoAdd ? 1 : 0);
        app.delegate.openFiles({app.write("a.mkv"), app.write("b.mkv"), app.write("c.mkv")});
        qsizetype shownCount = 0;
        const QString text =
            "You don't seem to have write access to the selected destinatation or it is a read-only "
            "filesystem. Please choose another destination.\n\nThe movie “%1.mkv” stays on the sheet.";
        for (const char* name : {"c", "b", "a"}) {
            app.panels.savedAs = "/proc/x.mp4";
            QTRY_VERIFY(app.isReady());
            if (!autoAdd) app.sheet().addToQueue();
            ++shownCount;
            QTRY_COMPARE(app.presenter.shown.size(), shownCount);
            QCOMPARE(app.presenter.messages().last(), text.arg(name));
            QVERIFY(app.isReady());
            QCOMPARE(app.sheet().path(), app.path(name + QString(".mkv")));
            app.panels.savedAs = app.path(name + QString(".mp4"));
            app.sheet().addToQueue();
        }
        QCOMPARE(app.queue().count(), 3);
        QCOMPARE(app.presenter.shown.size(), 3);
    }

    void whatIsMissingAtLaunchIsTold() {
        Launched app;
        app.storeFolder("disk/out");
        setDefaultObject("WatchfolderBookmark", app.path("disk/in").toUtf8());
        setDefaultInt("WatchfolderActive", 1);
        app.delegate.applicationWillFinishLaunching();
        const QString missing =
            "The destination folder “%1” is not there. It comes back to the list when it is. The watch "
            "folder “%2” is not there. It is watched again when it is.";
        QCOMPARE(app.status, missing.arg(app.path("disk/out"), app.path("disk/in")));
        app.delegate.openFiles({app.write("a.mkv")});
        QVERIFY(app.status.endsWith("when it is."));  // Movies that arrive at the same time do not hide it.
        QDir(app.path()).mkpath("disk/out");
        QTRY_COMPARE(app.status, "The destination folder “" + app.path("disk/out") + "” is there again.");
    }

    void dropsAreJudged() {
        Launched app;
        app.write("with/deep/er/a.ts");
        app.write("without/a.txt");
        // Why these are refused; empty: they are not.
        const auto refusal = [&](const QStringList& names) {
            QList<QUrl> urls{QUrl("https://films.example/a.mkv")};
            for (const QString& name : names)
                urls.append(QUrl::fromLocalFile(app.path(name)));
            app.status.clear();
            return app.delegate.draggingEntered(urls) ? QString() : app.status;
        };
        for (const QStringList& taken : {QStringList{"a.MKV"}, {"x.pdf", "a.webm", "a.srt"}, {"with"}})
            QCOMPARE(refusal(taken), "");
        QVERIFY(refusal({"a.srt"}).contains("A subtitle file needs its movie"));
        QVERIFY(refusal({"x.pdf"}).contains("“x.pdf” is not a movie."));
        QVERIFY(refusal({"x.pdf", "y"}).contains("None of these files"));
        QVERIFY(refusal({"without"}).contains("no movie in the folder “without”"));
        QVERIFY(refusal({}).contains("Only files of this computer"));

        app.write("disc/stream/1.M2TS");
        const QString one = "“%1” is left out: Ravelin does not convert movies of the type %2.";
        QCOMPARE(refusal({"a.m2ts"}), one.arg("a.m2ts", ".m2ts"));
        QCOMPARE(refusal({"disc"}), one.arg("1.M2TS", ".m2ts"));
        QCOMPARE(refusal({"a.m2ts", "b.vob", "c.vob"}),
                 "Movies of the types .m2ts, .vob are left out: Ravelin does not convert them.");
        // Beside movies that are taken, after a search, too.
        for (const QStringList& names : {QStringList{"a.mkv", "disc/stream/1.M2TS"}, {"with", "disc"}}) {
            QStringList paths;
            for (const QString& name : names)
                paths.append(app.path(name));
            QVERIFY(refusal(names).isEmpty());
            app.delegate.openFiles(paths);
            QTRY_COMPARE(app.status, one.arg("1.M2TS", ".m2ts"));
        }
    }

    void speedNotice() {
        for (const auto& [usages, style, wasDismissed, shown] : {std::tuple(3, 0, false, false),
                                                                 {4, 0, false, true},
                                                                 {4, 1, false, false},
                                                                 {4, 0, true, false}}) {
            Launched app(Launched::Starts::Later);
            setDefaultInt("quillonlib_1.0.0_usages", usages);
            setDefaultInt(kConversionPresetKey, style);
            setDefaultInt(kWelcomeShownKey, wasDismissed ? 1 : 0);
            app.delegate.applicationWillFinishLaunching();
            QCOMPARE(app.presenter.shown.size(), shown ? 1 : 0);
            QCOMPARE(defaultInt(kWelcomeShownKey), shown || wasDismissed ? 1 : 0);
            if (shown) QCOMPARE(app.presenter.shown.first().icon, "ok.png");
        }
        for (const long answer : {kAlertFirstButton, RecordingPresenter::kNobody, kAlertSecondButton}) {
            Launched app(Launched::Starts::Later);
            setDefaultInt("quillonlib_1.0.0_usages", 4);
            app.presenter.answer.response = answer;
            QSignalSpy preference(&app.delegate, &AppDelegate::preferenceRequested);
            app.delegate.applicationWillFinishLaunching();
            QCOMPARE(app.presenter.shown.first().buttons.front().title, "OK");
            QCOMPARE(preference.value(0).value(0).toString(),
                     answer == kAlertSecondButton ? "ConversionPreset" : "");
        }
    }

    void retiredEncodingAndNotifications() {
        Launched app(Launched::Starts::Later);
        setDefaultInt(kExternalSubtitleEncodingKey, 1);
        app.delegate.applicationWillFinishLaunching();
        QCOMPARE(defaultInt(kExternalSubtitleEncodingKey), 0);
        Q_EMIT app.desktop.notificationActivated("/tmp/a.mp4");
        QSignalSpy front(&app.delegate, &AppDelegate::mainWindowRequested);
        Q_EMIT app.desktop.notificationActivated({}, "token");
        QCOMPARE(front.value(0), QVariantList{"token"});
        QCOMPARE(app.desktop.revealed, QStringList("/tmp/a.mp4"));
    }

    void theEndDuringAnAlert_data() { addRows<bool>({{"full disk", false}, {"source removed", true}}); }
    void theEndDuringAnAlert() {
        const auto [sourceIsGone] = row<bool>();
        Launched app;
        app.presenter.waits = true;
        app.tool.setConversion("echo No space left on device >&2; exit 1\n");
        app.putOutputsNextToSource();
        QVERIFY(app.open({"a.mkv"}));
        bool wasOpen = false;
        app.presenter.whileShown = [&] {
            if (std::exchange(wasOpen, true)) return;
            // Neither a second start of the job nor its end may happen during it.
            app.queue().startNextJobInQueue();
            QCOMPARE(app.queue().job(0)->state(), JobState::Failed);
            app.delegate.terminate(false);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        if (sourceIsGone) QFile::remove(app.path("a.mkv"));
        app.sheet().addToQueue();
        QTRY_VERIFY(wasOpen);
        QCOMPARE(app.queue().count(), 0);
    }

    void oneAlertAtATime() {
        Launched app;
        app.presenter.waits = true;
        app.tool.setReport("nothing of use");
        int open = 0;
        app.presenter.whileShown = [&] {
            QCOMPARE(++open, 1);
            QTRY_VERIFY(!app.sheet().isShown());  // The others arrive meanwhile.
            QCoreApplication::processEvents();
            --open;
        };
        app.delegate.openFiles({app.write("0.mkv"), app.write("1.mkv"), app.write("2.mkv")});
        QTRY_COMPARE_WITH_TIMEOUT(app.presenter.shown.size(), 3, kLongEnough);
    }

    void aProbeThatHangsCanBeLeft() {
        Launched app;
        app.tool.setProbe("exec sleep 1000");
        app.delegate.openFiles({app.write("a.mkv"), app.write("b.mkv")});
        QVERIFY(app.sheet().isScanning());
        app.sheet().cancelAdd();
        QTRY_COMPARE(app.sheet().path(), app.path("a.mkv"));
        app.sheet().cancelAll();
        QTRY_VERIFY(!app.sheet().isShown());
        QVERIFY(app.presenter.shown.isEmpty());
    }

    void leavingAMovieOutResumesNothing() {
        Launched app;
        app.tool.setConversion(FakeTool::waitFor(app.path("never")));
        app.putOutputsNextToSource();
        QVERIFY(app.confirm("a.mkv"));
        app.queue().job(0)->pause();
        QVERIFY(app.open({"b.mkv"}));
        app.sheet().cancelAdd();
        QCOMPARE(app.queue().job(0)->state(), JobState::Paused);
    }

    void theLastNotificationSumsUp() {
        Launched app;
        app.putOutputsNextToSource();
        app.tool.setConversion("case $destination in *bad*) exit 1;; esac\necho movie >$destination\n");
        app.queue().pauseContinueClicked(true);
        for (const char* name : {"a.mkv", "bad.mkv", "b.mkv", "c.mkv"})
            QVERIFY(app.confirm(name));
        app.queue().pauseContinueClicked(true);
        QTRY_COMPARE(app.desktop.notifications.size(), 5);
        QHash<QString, int> groups;
        for (const Notification& notification : std::as_const(app.desktop.notifications))
            ++groups[notification.group];
        QCOMPARE(groups.size(), 2);
        QCOMPARE(groups.value(QString()), 1);  // The failure is not replaced.
        const Notification last = app.desktop.notifications.last();
        QCOMPARE(last.text, "3 converted, 1 failed");
        QVERIFY(last.showsWindow && !last.group.isEmpty());
    }

    void theSettingAndTheQueueBothEndTheApplication_data() {
        addRows<int, int>(
            {{"quit", int(EndAction::Kind::Quit), 0}, {"sleep", int(EndAction::Kind::Sleep), 1}});
    }
    void theSettingAndTheQueueBothEndTheApplication() {
        const auto [kind, actions] = row<int, int>();
        Launched app;
        app.putOutputsNextToSource();
        setDefaultInt(kQuitAfterConversionKey, 1);
        QSignalSpy terminating(&app.delegate, &AppDelegate::terminating);
        app.delegate.endAction().choose(EndAction::Kind(kind));
        QVERIFY(app.confirm("a.mkv"));
        if (actions > 0) {  // Sleep comes first, or it would not come at all.
            QTRY_VERIFY(app.delegate.endAction().secondsLeft());
            QCOMPARE(app.queue().jobCountWithState(JobState::Finished), 1);
            QCOMPARE(terminating.count(), 0);
            app.delegate.openFiles({app.write("b.mkv")});  // It is on its way now.
            QVERIFY(!app.delegate.endAction().secondsLeft());
            QTRY_VERIFY(app.isReady());
            app.sheet().cancelAdd();
            app.delegate.endAction().carryOut();
        }
        QTRY_COMPARE(terminating.count(), 1);
        QCOMPARE(app.desktop.carriedOut.size(), actions);
        QVERIFY(!app.delegate.endAction().secondsLeft());
    }

    void quittingAsksOnlyWhileAJobConverts() {
        Launched app;
        app.tool.setConversion(FakeTool::waitFor(app.path("never")));
        app.putOutputsNextToSource();
        QVERIFY(app.delegate.applicationShouldTerminate());
        QVERIFY(app.confirm("a.mkv"));
        QTRY_VERIFY(QFile::exists(app.tool.runningMark()));
        QSignalSpy terminated(&app.delegate, &AppDelegate::terminated);
        app.presenter.answer.response = kAlertSecondButton;
        app.delegate.terminate(true);
        QVERIFY(app.presenter.messages().last().startsWith("Conversion is in progresss. Are you sure"));
        QCOMPARE(app.presenter.shown.last().buttons.front().title, "Quit");
        QCOMPARE(app.presenter.shown.last().defaultResponse(), kAlertSecondButton);
        QCOMPARE(app.queue().count(), 1);

        app.presenter.answer.response = kAlertFirstButton;
        app.delegate.terminate(true);
        QCOMPARE(app.queue().count(), 0);
        QTRY_VERIFY(terminated.count() > 0);
        QVERIFY(!QFile::exists(app.path("a.mp4")));
        QVERIFY(app.desktop.held.isEmpty());
    }
};

QTEST_GUILESS_MAIN(AppDelegateTest)
#include "tst_AppDelegate.moc"
