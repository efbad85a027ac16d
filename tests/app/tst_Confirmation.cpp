#include "fakes/LaunchedApplication.h"
#include "fakes/Table.h"

#include <QSignalSpy>

namespace {

constexpr int kLongEnough = 30000;  // ms

/// H.264 with English and German sound, or HEVC for movies whose names have an "h".
constexpr const char* kReport = R"(case ${2##*/} in *[hH]*) codec=hevc;; *) codec=h264;; esac
printf '%s\n' "Input #0, matroska,webm, from 'x':" "  Duration: 00:00:10.00, start: 0.000000, bitrate: 1 kb/s" \
"    Stream #0:0: Video: $codec, yuv420p, 640x360, 25 fps" "    Stream #0:1(eng): Audio: aac, 48000 Hz, stereo" \
"    Stream #0:2(ger): Audio: aac, 48000 Hz, stereo" >&2)";

}  // namespace

class ConfirmationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void all_data() {
        addRows<int, bool, QString>({{"asks once", 0, false, "chosen"},
                                     {"next to the movies", 1, false, "in"},
                                     {"stored folder", 3, false, "out"},
                                     {"at the bottom", 3, true, "out"}});
    }
    void all() {
        const auto [destination, atBottom, folder] = row<int, bool, QString>();
        LaunchedApplication app(LaunchedApplication::Starts::Later);
        QDir(app.path()).mkpath("out");
        app.storeFolder("out");
        setDefaultInt(kDefaultDestinationKey, destination);
        setDefaultInt(kInsertJobsAtBottomKey, atBottom ? 1 : 0);
        app.delegate.applicationWillFinishLaunching();
        app.panels.folder = app.path("chosen");
        QDir(app.path()).mkpath("chosen");
        const QString slow = app.path("go on");
        app.tool.setProbe("case ${2##*/} in *9*) wait_until \"[ -e '" + slow.toUtf8() + "' ]\";; esac\n" +
                          kReport);
        app.presenter.waits = true;
        QStringList names;
        for (const char* name : {"in/10.mkv", "in/h 1.mkv", "in/2.mkv", "in/H 3.mkv", "in/9.mkv", "in/8.mkv"})
            names.append(name);
        QVERIFY(app.open(names));
        QTRY_COMPARE(app.sheet().path(), app.path("in/8.mkv"));
        app.sheet().selectAudio(1);
        app.sheet().addAll();
        // What is probed converts while the next ones are still probed.
        QTRY_COMPARE(app.sheet().path(), app.path("in/9.mkv"));
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 2, kLongEnough);
        QVERIFY(app.presenter.shown.isEmpty());
        QCOMPARE(app.queue().job(0)->audioTrackIndex(), 0);
        QCOMPARE(app.queue().job(1)->audioTrackIndex(), 1);
        app.queue().removeJobs({app.queue().job(1)});  // The others stay in their order.
        app.delegate.openFiles({app.write("later.mkv")});
        app.write("go on");
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 5, kLongEnough);
        QStringList outputs;
        for (qsizetype i = 0; i < 5; ++i)
            outputs.append(QDir(app.path()).relativeFilePath(app.outputOf(i)));
        QStringList expected;
        for (const char* name : {"2", "9", "10", "h 1", "H 3"})
            expected.append(folder + u'/' + name + ".mp4");
        QCOMPARE(outputs, expected);
        QCOMPARE(app.panels.requests.size(), destination == 0 ? 1 : 0);

        // The later one waits for the user; the warnings of the others are one list.
        QTRY_COMPARE(app.sheet().path(), app.path("later.mkv"));
        QTRY_COMPARE(app.presenter.shown.size(), 1);
        const Alert& list = app.presenter.shown.first();
        QVERIFY(list.value.toString().startsWith("The file 'h 1.mkv' contains a H265/HEVC video track."));
        QVERIFY(list.value.toString().endsWith("The same holds for: “H 3.mkv”."));
        QCOMPARE(list.suppressionTitle, "Don't warn again");
    }

    void oneWarningIsShownAsEverAndAllCanBeSuppressed() {
        LaunchedApplication app;
        app.tool.setProbe(kReport);
        app.putOutputsNextToSource();
        app.presenter.answer.suppressed = true;
        const auto addAll = [&](const QStringList& names) {
            const qsizetype count = app.queue().count() + names.size();
            if (!app.open(names)) return false;
            app.sheet().addAll();
            return QTest::qWaitFor([&] { return app.queue().count() == count; }, kLongEnough);
        };
        QVERIFY(addAll({"h1.mkv", "b.mkv", "a.mkv"}));
        QCOMPARE(app.presenter.keys(), QStringList("hevcvideowarning"));
        QVERIFY(addAll({"h2.mkv", "h3.mkv", "c.mp4"}));
        QCOMPARE(app.presenter.shown.size(), 1);
        setDefaultInt("_hevcvideowarning_1.0.0_asked", 0);
        QVERIFY(addAll({"h4.mkv", "h5.mkv", "d.mkv"}));
        QCOMPARE(app.presenter.shown.size(), 2);
        QCOMPARE(defaultInt("_hevcvideowarning_1.0.0_asked"), 1);
    }

    void refusedMoviesWaitForTheUser() {
        LaunchedApplication app(LaunchedApplication::Starts::Later);
        app.desktop.sandboxed = true;
        app.presenter.waits = true;
        app.delegate.applicationWillFinishLaunching();
        setDefaultInt(kDefaultDestinationKey, LaunchedApplication::kNextToSource);
        app.delegate.destinations().addOpenedFolder(app.path("in"));
        app.queue().pauseContinueClicked(true);
        QVERIFY(app.open({"elsewhere/a.mkv", "in/d.mkv", "in/b.mkv", "in/c.mkv"}));
        app.sheet().addAll();
        QTRY_COMPARE(app.queue().count(), 3);
        QTRY_COMPARE(app.presenter.shown.size(), 1);
        QVERIFY(app.presenter.messages().last().endsWith("The movie “a.mkv” stays on the sheet."));
        QTRY_COMPARE(app.sheet().path(), app.path("elsewhere/a.mkv"));
        QTRY_VERIFY(app.isReady());

        // Movies that are queued already are left out. In one folder for all, the first refusal ends it.
        app.delegate.openFiles({app.path("in/b.mkv"), app.path("in/d.mkv")});
        app.popUp().choose(0);
        app.panels.folder = "/proc";
        app.sheet().addAll();
        QTRY_COMPARE(app.presenter.shown.size(), 2);
        QVERIFY(app.presenter.messages().last().startsWith("You don't seem to have write access"));
        QVERIFY(app.isReady() && app.sheet().waitingCount() == 2);
        app.panels.folder = app.path();
        app.sheet().addAll();
        QTRY_COMPARE(app.presenter.shown.size(), 3);
        QCOMPARE(app.presenter.shown.last().value.toString(),
                 "“b.mkv” is in the queue already and was left out. The same holds for: “d.mkv”.");
        QCOMPARE(app.queue().count(), 4);
        QVERIFY(!app.sheet().isShown());
    }

    void cancellingLeavesTheRestOut() {
        LaunchedApplication app;
        app.putOutputsNextToSource();
        app.queue().pauseContinueClicked(true);
        app.tool.setProbe(QByteArray("case ${2##*/} in *b*) wait_until false;; esac\n") + kReport);
        QVERIFY(app.open({"b.mkv", "c.mkv", "d.mkv", "a.mkv"}));
        app.sheet().addAll();
        QTRY_COMPARE(app.sheet().path(), app.path("b.mkv"));
        app.delegate.openFiles({app.write("e.mkv")});
        app.sheet().cancelAdd();
        QTRY_COMPARE(app.queue().count(), 3);
        QTRY_COMPARE(app.sheet().path(), app.path("e.mkv"));
        app.delegate.openFiles({app.path("b.mkv"), app.write("f.mkv")});
        QTRY_VERIFY(app.isReady());
        app.sheet().addAll();
        QTRY_COMPARE(app.sheet().path(), app.path("b.mkv"));
        app.sheet().cancelAll();
        QTRY_VERIFY(!app.sheet().isShown());
        QCOMPARE(app.queue().count(), 3);
    }

    void whatTheSheetSaysBefore() {
        LaunchedApplication app(LaunchedApplication::Starts::Later);
        QDir(app.path()).mkpath("out");
        app.storeFolder("out");
        app.delegate.applicationWillFinishLaunching();
        app.queue().pauseContinueClicked(true);
        for (const char* name : {"Series/S1/1.mkv", "Series/S1/2.mkv", "Series/S2/1.mkv", "Series/0.mkv"})
            app.write(name);
        app.write("out/1.mp4");
        app.delegate.openFiles({app.path("Series") + u'/'});
        QTRY_VERIFY(app.isReady());
        QCOMPARE(app.sheet().droppedFolder(), "Series/S2");
        QCOMPARE(app.sheet().notice(), "Its output exists already; the new one: “1-0.mp4”.");
        app.sheet().setKeepsFolders(true);
        QCOMPARE(app.sheet().notice(), QString());
        app.popUp().choose(LaunchedApplication::kNextToSource);
        app.sheet().addToQueue();  // The choice holds for what was dropped with it, but not for others.
        QTRY_COMPARE(app.sheet().path(), app.path("Series/S1/2.mkv"));
        QTRY_VERIFY(app.isReady());
        QCOMPARE(app.popUp().selected(), LaunchedApplication::kNextToSource);
        app.popUp().choose(DestinationPopUp::kFirstFolder);
        app.sheet().addAll();
        QTRY_COMPARE(app.queue().count(), 4);
        QStringList outputs;
        for (qsizetype i = 0; i < 4; ++i)
            outputs.append(QDir(app.path()).relativeFilePath(app.outputOf(i)));
        QCOMPARE(outputs, QStringList({"out/Series/0.mp4", "out/Series/S1/1.mp4", "out/Series/S1/2.mp4",
                                       "Series/S2/1.mp4"}));

        app.delegate.openFiles({app.path("Series/S1/2.mkv")});
        QTRY_VERIFY(app.isReady());
        QCOMPARE(app.sheet().notice(), "This movie is in the queue already.");
        QCOMPARE(app.sheet().droppedFolder(), QString());
        app.popUp().choose(LaunchedApplication::kNextToSource);
        app.sheet().addToQueue();
        QVERIFY(app.open({"other.mkv"}));
        QCOMPARE(app.popUp().selected(), DestinationPopUp::kFirstFolder);
    }

    void quittingWaitsForTheBatch() {
        LaunchedApplication app;
        app.putOutputsNextToSource();
        setDefaultInt(kQuitAfterConversionKey, 1);
        QSignalSpy terminating(&app.delegate, &AppDelegate::terminating);
        app.tool.setProbe("case ${2##*/} in *b*) wait_until \"[ -e '" + app.path("go on").toUtf8() +
                          "' ]\";; esac\n" + kReport);
        QVERIFY(app.open({"b.mkv", "a.mkv"}));
        app.sheet().addAll();
        QTRY_COMPARE(app.queue().jobCountWithState(JobState::Finished), 1);
        QCOMPARE(terminating.count(), 0);
        app.write("go on");
        QTRY_COMPARE(terminating.count(), 1);
        QVERIFY(QFile::exists(app.path("b.mp4")));
    }
};

QTEST_GUILESS_MAIN(ConfirmationTest)
#include "tst_Confirmation.moc"
