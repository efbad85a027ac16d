#include "app/AppDelegate.h"
#include "app/queue/UnfinishedFiles.h"
#include "fakes/FakeTool.h"
#include "fakes/RecordingPanels.h"
#include "fakes/TestHome.h"
#include "feedback/PXRatingWindowController.h"
#include "settings/Keys.h"
#include "support/store/Defaults.h"
#include "support/store/FolderAccess.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

namespace {

constexpr int kNextToSource = 1;
constexpr int kFirstFolder = 3;

/// The whole application but its windows.
class Launched : public TestHome {
public:
    Launched() : tool(path()), delegate(panels) {
        AppDelegate::initialize();
        QObject::connect(&delegate, &AppDelegate::statusMessage,
                         [this](const QString& message) { status = message; });
    }

    AddSheet& sheet() { return delegate.addSheet(); }
    JobQueue& queue() { return delegate.queue(); }
    DestinationPopUp& popUp() { return delegate.destinations().destinationPopUp(); }
    bool isReady() { return sheet().isShown() && !sheet().informationString().isEmpty(); }
    /// Opens one movie and has it on the sheet.
    QString open(const QString& name) {
        const QString movie = write(name);
        delegate.openFiles({movie});
        return movie;
    }
    QString destinationOfJob(qsizetype index) {
        return queue().job(index)->fileInfo().destinationURL.toLocalFile();
    }

    FakeTool tool;
    RecordingPanels panels;
    AppDelegate delegate;
    QString status;
};

}  // namespace

class AppDelegateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theRoadOfOneMovie() {
        Launched app;
        app.delegate.applicationWillFinishLaunching();
        QCOMPARE(app.delegate.build(), "Build: 1");
        QVERIFY(app.delegate.version().startsWith("Version: "));
        app.tool.setReport(
            FakeTool::report("    Stream #0:1(eng): Audio: ac3, 48000 Hz, stereo\n"
                             "    Stream #0:2(ger): Audio: aac, 48000 Hz, stereo\n"));
        setDefaultInt(kDefaultAudioKey, 3);  // German
        setDefaultInt("quillonlib_1.0.0_usages", 19);
        QString question;
        connect(&app.delegate, &AppDelegate::ratingWindowRequested,
                [&](const PXRatingWindowController& asked) { question = asked.introText(); });
        QSignalSpy front(&app.delegate, &AppDelegate::mainWindowRequested);
        app.open("Trip.mkv");
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
        QCOMPARE(app.panels.requests.last().kind, "save");
        QCOMPARE(app.panels.requests.last().fileName, "Trip.mp4");
        QCOMPARE(app.panels.requests.last().startingIn, app.path());
        QVERIFY(!app.sheet().isShown());
        QCOMPARE(app.queue().count(), 1);
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
        app.delegate.applicationWillFinishLaunching();
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
        app.delegate.openFiles({app.write("a.mkv"), app.write("b.mkv"), app.write("c.mkv")});
        for (const int waiting : {2, 1}) {
            QTRY_VERIFY(app.isReady());
            QCOMPARE(app.sheet().waitingCount(), waiting);
            app.sheet().addToQueue();
        }
        QCOMPARE(app.queue().count(), 2);
        QCOMPARE(app.queue().jobCountWithState(JobState::Queued), 2);
        QTRY_VERIFY(app.isReady());
        app.sheet().cancelAdd();
        QVERIFY(!app.sheet().isShown());
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 2, 30000);
    }

    void nextToTheSourceNeedsAnOpenedFolderInASandbox() {
        Launched app;
        app.desktop.sandboxed = true;
        app.delegate.applicationWillFinishLaunching();
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
        app.open("a.mkv");
        QTRY_VERIFY(app.isReady());
        app.sheet().addToQueue();  // The panel is cancelled.
        QVERIFY(app.presenter.messages().last().startsWith("You've chosen the 'Next to' default"));
        QCOMPARE(app.panels.requests.last().startingIn, app.path());
        QVERIFY(app.sheet().isShown());

        app.panels.folder = app.path("elsewhere");
        app.sheet().addToQueue();
        QCOMPARE(app.presenter.messages().last(),
                 "You did not seem to select a folder that contains your MKV.");
        QCOMPARE(app.queue().count(), 0);

        app.panels.folder = app.path();
        app.write("a.mp4");
        app.sheet().addToQueue();
        QCOMPARE(app.destinationOfJob(0), app.path("a-0.mp4"));
        QCOMPARE(app.panels.requests.size(), 3);
    }

    void aStoredFolderIsOpenAsLongAsItsJob() {
        Launched app;
        QDir(app.path()).mkpath("out");
        setDefaultArray(kDestinationBookmarksKey, QVariantList{app.path("out").toUtf8()});
        setDefaultArray(kDestinationNamesKey, QVariantList{"out"});
        setDefaultInt(kHasUpgradedFromPre13Key, 1);
        setDefaultInt(kDefaultDestinationKey, kFirstFolder);
        app.delegate.applicationWillFinishLaunching();
        app.queue().pauseContinueClicked(true);
        app.open("a.mkv");
        QTRY_VERIFY(app.isReady());
        app.sheet().addToQueue();
        QCOMPARE(app.destinationOfJob(0), app.path("out/a.mp4"));
        QCOMPARE(folderaccess::openAccesses(app.path("out")), 1);
        app.queue().job(0)->remove();
        QCOMPARE(folderaccess::openAccesses(app.path("out")), 0);

        // Unplugged since: told, and the movie stays on the sheet for another choice.
        app.open("b.mkv");
        QTRY_VERIFY(app.isReady());
        QDir().rmdir(app.path("out"));
        app.sheet().addToQueue();
        QVERIFY(app.presenter.messages().last().contains("Please choose another destination."));
        QVERIFY(app.isReady());
        QCOMPARE(app.queue().count(), 0);
        app.popUp().select(0);
        app.panels.savedAs = app.path("b.mp4");
        app.sheet().addToQueue();
        QCOMPARE(app.queue().count(), 1);
    }

    void whatTheSavePanelNames() {
        Launched app;
        app.delegate.applicationWillFinishLaunching();
        app.queue().pauseContinueClicked(true);
        const QString movie = app.open("a.mp4");
        QTRY_VERIFY(app.isReady());
        app.panels.savedAs = movie;
        app.sheet().addToQueue();
        QVERIFY(app.presenter.messages().last().startsWith("You've tried to overwrite the source file"));
        QCOMPARE(app.presenter.shown.last().buttons.front().title, "D'oh");
        QCOMPARE(app.queue().count(), 0);

        // A second job for a name that the first is still going to write takes a free one.
        app.panels.savedAs = app.path("out.mp4");
        app.sheet().addToQueue();
        app.open("b.mkv");
        QTRY_VERIFY(app.isReady());
        app.sheet().addToQueue();
        QCOMPARE(app.destinationOfJob(1), app.path("out.mp4"));
        QCOMPARE(app.destinationOfJob(0), app.path("out-0.mp4"));
        // So does one that came when the first is being written, whatever the panel asked.
        app.tool.setConversion(FakeTool::waitFor(app.path("never")));
        app.queue().job(1)->start();
        QVERIFY(QFile::exists(app.path("out.mp4")));
        app.open("c.mkv");
        QTRY_VERIFY(app.isReady());
        app.sheet().addToQueue();
        QCOMPARE(app.destinationOfJob(0), app.path("out-1.mp4"));
    }

    void aRefusedMovieStaysOnTheSheet_data() {
        QTest::addColumn<bool>("autoAdd");
        QTest::newRow("confirmed") << false;
        QTest::newRow("without asking") << true;
    }
    void aRefusedMovieStaysOnTheSheet() {
        QFETCH(const bool, autoAdd);
        Launched app;
        app.presenter.waits = true;
        app.delegate.applicationWillFinishLaunching();
        setDefaultInt(kAutoAddKey, autoAdd ? 1 : 0);
        app.delegate.openFiles({app.write("a.mkv"), app.write("b.mkv"), app.write("c.mkv")});
        qsizetype told = 0;
        for (const char* name : {"c", "b", "a"}) {
            app.panels.savedAs = "/proc/x.mp4";
            QTRY_VERIFY(app.isReady());
            if (!autoAdd) app.sheet().addToQueue();
            ++told;
            QTRY_COMPARE(app.presenter.shown.size(), told);
            QCOMPARE(app.presenter.messages().last(),
                     QString("You don't seem to have write access to the selected destinatation or it is a "
                             "read-only filesystem. Please choose another destination.\n\nThe movie "
                             "“%1.mkv” stays on the sheet.")
                         .arg(name));
            QVERIFY(app.isReady());
            QCOMPARE(app.sheet().path(), app.path(name + QString(".mkv")));
            app.panels.savedAs = app.path(name + QString(".mp4"));
            app.sheet().addToQueue();
        }
        QCOMPARE(app.queue().count(), 3);
        QCOMPARE(app.presenter.shown.size(), 3);
    }

    void autoAddAsksNothing() {
        Launched app;
        app.delegate.applicationWillFinishLaunching();
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
        setDefaultInt(kAutoAddKey, 1);
        QDir(app.path()).mkpath("in/deep");
        app.write("in/b.mkv");
        app.write("in/deep/a.avi");
        app.write("in/notes.txt");
        app.delegate.openFiles({app.path("in")});
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 2, 30000);
        QVERIFY(QFile::exists(app.path("in/deep/a.mp4")));
    }

    void whatIsMissingAtLaunchIsTold() {
        Launched app;
        const auto store = [&](const char* bookmarks, const char* names, const char* watched) {
            setDefaultArray(kDestinationBookmarksKey, QVariantList{app.path(bookmarks).toUtf8()});
            setDefaultArray(kDestinationNamesKey, QVariantList{names});
            setDefaultObject("WatchfolderBookmark", app.path(watched).toUtf8());
            setDefaultInt("WatchfolderActive", 1);
        };
        store("disk/out", "out", "disk/in");
        app.delegate.applicationWillFinishLaunching();
        QCOMPARE(
            app.status,
            QString("The destination folder “%1” is not there. It comes back to the list when it is. The "
                    "watch folder “%2” is not there. It is watched again when it is.")
                .arg(app.path("disk/out"), app.path("disk/in")));
        const QString status = app.status;
        app.open("a.mkv");
        QCOMPARE(app.status, status);  // Movies that come at once do not hide it.
        QDir(app.path()).mkpath("disk/out");
        QTRY_COMPARE(app.status,
                     QString("The destination folder “%1” is there again.").arg(app.path("disk/out")));
    }

    void dropsAreJudged_data() {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("reason");
        QTest::newRow("movie") << QStringList{"a.MKV"} << true << "";
        QTest::newRow("movie and more") << QStringList{"x.pdf", "a.webm", "a.srt"} << true << "";
        QTest::newRow("subtitles") << QStringList{"a.srt"} << false << "A subtitle file needs its movie";
        QTest::newRow("document") << QStringList{"x.pdf"} << false << "“x.pdf” is not a movie.";
        QTest::newRow("documents") << QStringList{"x.pdf", "y"} << false << "None of these files";
        QTest::newRow("folder with a movie") << QStringList{"with"} << true << "";
        QTest::newRow("folder without")
            << QStringList{"without"} << false << "no movie in the folder “without”";
        QTest::newRow("web page") << QStringList{} << false << "Only files of this computer";
    }
    void dropsAreJudged() {
        QFETCH(const QStringList, names);
        QFETCH(const bool, accepted);
        QFETCH(const QString, reason);
        Launched app;
        app.write("with/deep/er/a.ts");
        app.write("without/a.txt");
        QList<QUrl> urls{QUrl("https://films.example/a.mkv")};
        for (const QString& name : names)
            urls.append(QUrl::fromLocalFile(app.path(name)));
        QCOMPARE(app.delegate.draggingEntered(urls), accepted);
        QVERIFY2(app.status.contains(reason) && app.status.isEmpty() == accepted, qPrintable(app.status));
    }

    void speedNotice_data() {
        QTest::addColumn<int>("usages");
        QTest::addColumn<int>("style");
        QTest::addColumn<bool>("shown");
        QTest::newRow("fresh") << 0 << 0 << false;
        QTest::newRow("three") << 3 << 0 << false;
        QTest::newRow("four") << 4 << 0 << true;
        QTest::newRow("four, fast") << 4 << 1 << false;
    }
    void speedNotice() {
        QFETCH(const int, usages);
        QFETCH(const int, style);
        QFETCH(const bool, shown);
        for (const bool wasDismissed : {false, true}) {
            Launched app;
            setDefaultInt("quillonlib_1.0.0_usages", usages);
            setDefaultInt(kConversionPresetKey, style);
            setDefaultInt(kWelcomeShownKey, wasDismissed ? 1 : 0);
            app.delegate.applicationWillFinishLaunching();
            const bool expected = shown && !wasDismissed;
            QCOMPARE(app.presenter.shown.size(), expected ? 1 : 0);
            QCOMPARE(defaultInt(kWelcomeShownKey), shown || wasDismissed ? 1 : 0);
            if (expected) QCOMPARE(app.presenter.shown.first().icon, "ok.png");
        }
    }

    void retiredEncodingAndNotifications() {
        Launched app;
        setDefaultInt(kExternalSubtitleEncodingKey, 1);
        app.delegate.applicationWillFinishLaunching();
        QCOMPARE(defaultInt(kExternalSubtitleEncodingKey), 0);
        Q_EMIT app.desktop.notificationActivated("/tmp/a.mp4");
        QCOMPARE(app.desktop.revealed, QStringList("/tmp/a.mp4"));
    }

    void theEndComesWhileAnAlertIsOpen_data() {
        QTest::addColumn<QByteArray>("conversion");
        QTest::addColumn<bool>("sourceIsGone");
        QTest::newRow("full disk") << QByteArray("echo No space left on device >&2; exit 1\n") << false;
        QTest::newRow("source removed") << QByteArray("exit 1\n") << true;
    }
    void theEndComesWhileAnAlertIsOpen() {
        QFETCH(const QByteArray, conversion);
        QFETCH(const bool, sourceIsGone);
        Launched app;
        app.presenter.waits = true;
        app.delegate.applicationWillFinishLaunching();
        app.tool.setConversion(conversion);
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
        const QString movie = app.open("a.mkv");
        QTRY_VERIFY(app.isReady());
        bool wasOpen = false;
        app.presenter.whileShown = [&] {
            if (std::exchange(wasOpen, true)) return;
            // Neither a second start of the job nor its end may meet it halfway.
            app.queue().startNextJobInQueue();
            QCOMPARE(app.queue().job(0)->state(), JobState::Failed);
            app.delegate.terminate(false);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        if (sourceIsGone) QFile::remove(movie);
        app.sheet().addToQueue();
        QTRY_VERIFY(wasOpen);
        QCOMPARE(app.queue().count(), 0);
    }

    void oneAlertAtATime() {
        Launched app;
        app.presenter.waits = true;
        app.delegate.applicationWillFinishLaunching();
        app.tool.setReport("nothing of use");
        int open = 0;
        int most = 0;
        app.presenter.whileShown = [&] {
            most = qMax(most, ++open);
            QTest::qWait(1);  // The others come meanwhile.
            --open;
        };
        QStringList movies;
        for (int i = 0; i < 5; ++i)
            movies.append(app.write(QStringLiteral("%1.mkv").arg(i)));
        app.delegate.openFiles(movies);
        QTRY_COMPARE_WITH_TIMEOUT(app.presenter.shown.size(), 5, 30000);
        QCOMPARE(most, 1);
    }

    void aProbeThatHangsCanBeLeft() {
        Launched app;
        app.delegate.applicationWillFinishLaunching();
        QFile::remove(app.path("resources/ffmpeg"));
        app.write("resources/ffmpeg", "#!/bin/sh\nexec sleep 1000\n");
        QFile::setPermissions(app.path("resources/ffmpeg"), QFile::ReadOwner | QFile::ExeOwner);
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
        app.delegate.applicationWillFinishLaunching();
        app.tool.setConversion(FakeTool::waitFor(app.path("never")));
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
        app.open("a.mkv");
        QTRY_VERIFY(app.isReady());
        app.sheet().addToQueue();
        app.queue().job(0)->pause();
        app.open("b.mkv");
        QTRY_VERIFY(app.isReady());
        app.sheet().cancelAdd();
        QCOMPARE(app.queue().job(0)->state(), JobState::Paused);
    }

    void whatIsUnfinishedMakesTheSameQueueAgain_data() {
        QTest::addColumn<QString>("queue");
        QTest::newRow("jobs on top") << "dcba";
        QTest::newRow("jobs at the bottom") << "abcd";
    }
    void whatIsUnfinishedMakesTheSameQueueAgain() {
        QFETCH(const QString, queue);
        Launched app;
        AppDelegate next(app.panels);
        for (AppDelegate* delegate : {&app.delegate, &next})
            delegate->applicationWillFinishLaunching();
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
        setDefaultInt("InsertJobsAtBottom", queue.startsWith(u'a') ? 1 : 0);
        app.tool.setConversion(
            "case $destination in *finished.mp4) echo movie > $destination;; *) exit 1; esac\n");
        for (const char* name : {"finished.mkv", "a.mkv", "b.mkv"}) {
            app.delegate.openFiles({app.write("a.srt"), app.write(name)});
            QTRY_VERIFY(app.isReady());
            app.sheet().addToQueue();
        }
        QTRY_COMPARE(app.queue().jobCountWithState(JobState::Finished), 1);
        app.delegate.openFiles({app.write("d.mkv"), app.write("c.mkv")});
        QTRY_VERIFY(app.isReady());  // One is at hand, one waits. A folder is being searched.
        QDir(app.path()).mkpath("folder");
        app.delegate.openFiles({app.path("folder")});
        const QStringList left = app.delegate.unfinishedFiles();
        QVERIFY(left.contains(app.path("folder")));
        app.delegate.terminate(false);

        // What is kept adds up, and is taken once.
        unfinished::keep(left.first(3));
        unfinished::keep(left.sliced(3));
        setDefaultInt(kAutoAddKey, 1);
        next.openFirstFiles({});
        QCOMPARE(unfinished::kept(), QStringList());
        QTRY_COMPARE(next.queue().count(), 4);
        for (qsizetype i = 0; i < queue.size(); ++i) {
            const MKVFileInfo& info = next.queue().job(i)->fileInfo();
            QCOMPARE(info.fileName, queue[i] + QString(".mkv"));
            QCOMPARE(info.subtitleFileURL.has_value(), queue[i] == u'a');
        }
    }

    void moviesMoveAlongWithTheApplication_data() {
        QTest::addColumn<QString>("now");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("expected");
        QTest::newRow("with the volume") << "two/x/app"
                                         << "one/m/a.mkv"
                                         << "two/m/a.mkv";
        QTest::newRow("in the folder") << "two"
                                       << "one/x/app/a.mkv"
                                       << "two/a.mkv";
        QTest::newRow("stays where it is") << "two/x/app"
                                           << "one/b.mkv"
                                           << "one/b.mkv";
        QTest::newRow("is nowhere") << "two/x/app"
                                    << "one/c.mkv"
                                    << "one/c.mkv";
    }
    void moviesMoveAlongWithTheApplication() {
        QFETCH(const QString, now);
        QFETCH(const QString, file);
        QFETCH(const QString, expected);
        const TestHome home;
        for (const char* there : {"two/a.mkv", "two/m/a.mkv", "one/b.mkv", "two/b.mkv"})
            home.write(there);
        QCOMPARE(unfinished::movedAlong({home.path(file)}, home.path("one/x/app"), home.path(now)),
                 QStringList(home.path(expected)));
    }

    void quittingAsksOnlyWhileAJobConverts() {
        Launched app;
        app.delegate.applicationWillFinishLaunching();
        app.tool.setConversion(FakeTool::waitFor(app.path("never")));
        setDefaultInt(kDefaultDestinationKey, kNextToSource);
        QVERIFY(app.delegate.applicationShouldTerminate());
        app.open("a.mkv");
        QTRY_VERIFY(app.isReady());
        app.sheet().addToQueue();
        QTRY_VERIFY(QFile::exists(app.tool.runningMark()));
        QSignalSpy terminated(&app.delegate, &AppDelegate::terminated);
        app.presenter.answer.response = kAlertSecondButton;
        app.delegate.terminate(true);
        QCOMPARE(app.presenter.messages().last(),
                 "Conversion is in progresss. Are you sure you want to quit?");
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
