#include "app/destinations/OutputName.h"
#include "fakes/LaunchedApplication.h"
#include "fakes/Table.h"

namespace {

constexpr int kLongEnough = 30000;  // ms

/// H.264 with English and German sound, or HEVC for movies whose names have an "h".
constexpr const char* kReport = R"(case ${2##*/} in *h*) codec=hevc;; *) codec=h264;; esac
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
        app.tool.setProbe("case ${2##*/} in *9*) wait_until \"[ -e '" + slow.toUtf8() + "' ]\";; esac\n" + kReport);
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
        app.delegate.openFiles({app.write("later.mkv")});
        app.write("go on");
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 6, kLongEnough);
        QStringList outputs;
        for (qsizetype i = 0; i < 6; ++i) {
            const ConversionJob* job = app.queue().job(i);
            outputs.append(QDir(app.path()).relativeFilePath(app.outputOf(i)));
            QCOMPARE(job->audioTrackIndex(), job->fileInfo().fileName == u"8.mkv" ? 1 : 0);
        }
        QStringList expected;
        for (const char* name : {"2", "8", "9", "10", "h 1", "H 3"})
            expected.append(folder + u'/' + name + ".mp4");
        QCOMPARE(outputs, expected);
        QCOMPARE(app.panels.requests.size(), destination == 0 ? 1 : 0);

        // The later one waits for the user, with the warnings of the others in one list.
        QTRY_COMPARE(app.sheet().path(), app.path("later.mkv"));
        QTRY_COMPARE(app.presenter.shown.size(), 1);
    }
};

QTEST_GUILESS_MAIN(ConfirmationTest)
#include "tst_Confirmation.moc"
