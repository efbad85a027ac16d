#include "app/destinations/OutputName.h"
#include "app/intake/AudioPreselection.h"
#include "app/intake/FileIntake.h"
#include "app/intake/Languages.h"
#include "app/intake/MovieFiles.h"
#include "fakes/FakeTool.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/base/Files.h"

#include <QSignalSpy>

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
        QCOMPARE(intake.bestLanguage().value(), 0);
        QCOMPARE(idle.count(), 0);
        intake.cancelAdd();
        QCOMPARE(idle.count(), 1);
        QVERIFY(!intake.fileInfo());
    }

    void anExpectedMovieIsProbedMeanwhile_data() {
        // whether its probe has ended when the next movie comes, whether it has changed, what comes, and
        // what was probed
        addRows<bool, bool, QString, QByteArray>({{"probed", true, false, "b.mkv", "b"},
                                                  {"being probed", false, false, "b.mkv", "b"},
                                                  {"changed", true, true, "b.mkv", "bb"},
                                                  {"another one", true, false, "c.mkv", "bc"}});
    }
    void anExpectedMovieIsProbedMeanwhile() {
        const auto [isProbed, hasChanged, next, probes] = row<bool, bool, QString, QByteArray>();
        const TestHome home;
        const FakeTool tool(home.path());
        tool.setProbe(
            "name=${2##*/}; printf %s ${name%.mkv} >> \"$folder/probes\"\n"
            "[ $name = a.mkv ] || wait_until '[ -e \"$folder/go\" ]'\n"
            "cat \"$folder/report\" >&2; [ $name = a.mkv ] || echo x >> \"$folder/ended\"");
        FileIntake intake(FileIntake::Messages::AtOnce);
        QSignalSpy started(&intake, &FileIntake::scanningStarted);
        QSignalSpy accepted(&intake, &FileIntake::fileAccepted);
        home.write("b.mkv", "b");
        home.write("c.mkv");
        intake.openFiles({home.write("a.mkv")});
        QTRY_COMPARE(accepted.count(), 1);
        intake.expect(home.path("b.mkv"));
        QTRY_COMPARE(files::contents(home.path("resources/probes")).value_or(""), "ab");
        if (isProbed) {
            home.write("resources/go");
            QTRY_VERIFY(QFile::exists(home.path("resources/ended")));
        }
        QCOMPARE(started.count(), 1);
        QCOMPARE(intake.fileInfo()->fileName, "a.mkv");
        if (hasChanged) home.write("b.mkv", "another");
        intake.cancelAdd();
        intake.openFiles({home.path(next)});
        QCOMPARE(started.count(), 2);
        QVERIFY(intake.isScanning());
        home.write("resources/go");
        QTRY_COMPARE(accepted.count(), 2);
        QCOMPARE(intake.fileInfo()->fileName, next);
        QCOMPARE(files::contents(home.path("resources/probes")).value(), "a" + probes);
    }

    void endsTheProbeUnderWay() {
        const TestHome home;
        const FakeTool tool(home.path());
        tool.setProbe("echo $$ > \"$folder/running\"; exec sleep 1000");
        auto intake = std::make_unique<FileIntake>(FileIntake::Messages::Scheduled);
        intake->openFiles({home.write("a.mkv")});
        QTRY_VERIFY(tool.process() > 0);
        const auto process = static_cast<pid_t>(tool.process());
        intake.reset();
        QVERIFY(process > 0 && ::kill(process, 0) != 0);
    }

    void sorting() {
        const TestHome home;
        const QString pictures = home.write("dvd.sub", QByteArray::fromHex("000001ba 72657374"));
        const QString plain = home.write("text.sub", "{1}{2}Hello");
        const auto sorted =
            moviefiles::sorted({"/a/B.MKV", "/a/x.srt", pictures, plain, "/a/notes.txt", "/a/c.webm",
                                "/a/x.ass", "/a/noextension", home.path("gone.sub")});
        QCOMPARE(sorted.movies, (QStringList{"/a/B.MKV", "/a/c.webm"}));
        QCOMPARE(sorted.subtitles,
                 (moviefiles::SubtitleFiles{{"/a/x", "/a/x.ass"}, {home.path("text"), plain}}));
        // Independent of the given order.
        const QString other = home.path("text.srt");
        for (const QStringList& paths : {QStringList{plain, other}, QStringList{other, plain}})
            QCOMPARE(moviefiles::sorted(paths).subtitles.values(), QStringList(plain));
    }

    void subtitleMatching() {
        const auto found = [](const QString& movie, QStringList subtitles) {
            subtitles.replaceInStrings(QRegularExpression("^"), "/m/");
            return moviefiles::subtitleFor("/m/" + movie, moviefiles::sorted(subtitles).subtitles).mid(3);
        };
        const QStringList both = {"Movie.srt", "Movie 2.srt"};
        QCOMPARE(found("Movie.mkv", both), "Movie.srt");
        QCOMPARE(found("Movie 2.mkv", both), "Movie 2.srt");
        QCOMPARE(found("Movie.mkv", {"Movie 2.srt"}), "Movie 2.srt");
        QCOMPARE(found("Movie.mkv", {"Movie.en.srt"}), "Movie.en.srt");
        QCOMPARE(found("Movie 2.mkv", {"Movie.srt"}), "");
        QCOMPARE(found("Movie.mkv", {"n/Movie.srt"}), "");
        QCOMPARE(found("Movie.mkv", {"movie.srt"}), "");
        QCOMPARE(found("A.mkv", {"Z.srt"}), "");
    }

    void foldersAreSearchedInNameOrder() {
        const TestHome home;
        for (const char* name : {"f/b.mkv", "f/a/z.mp4", "f/a/y.srt", "f/.hidden.mkv", "f/c.txt", "f/d.AVI"})
            home.write(name);
        QFile::link(home.path("f"), home.path("f/loop"));
        QStringList expected{".hidden.mkv", "a/y.srt", "a/z.mp4", "b.mkv", "d.AVI"};
        expected.replaceInStrings(QRegularExpression("^"), home.path("f/"));
        QCOMPARE(moviefiles::filesBelow(home.path("f")), expected);
        QCOMPARE(moviefiles::withFoldersSearched({"/x.mkv", home.path("f/a")}),
                 (QStringList{"/x.mkv", home.path("f/a/y.srt"), home.path("f/a/z.mp4")}));
    }

    void languageCodes() {
        QCOMPARE(languages::threeLetterCodes({"en-US", "de", "fr-CA", "bo", "aa", "zh_TW", "tlh-AQ", "C"}),
                 (QStringList{"eng", "ger", "fre", "tib", "aar", "chi", "tlh-AQ", "C"}));
        // Codes that are languages only in some tables; text that only looks like the end of a row.
        QCOMPARE(languages::threeLetterCodes({"no-NO", "nb", "tl", "tw-GH", "bh", "e", ""}),
                 (QStringList{"nor", "nob", "tgl", "twi", "bih", "e", ""}));
        QCOMPARE(languages::twoLetterCodes({"en-US", "de"}), (QStringList{"en", "de"}));
    }

    void languagesToLookFor() {
        const TestHome home;
        for (const auto& [value, list] : {std::pair(0, "ger eng"), {2, "eng"}, {8, "rus"}, {9, "ger eng"}}) {
            setDefaultInt(kDefaultAudioKey, value);
            QCOMPARE(audiopreselection::languages({"ger", "eng"}).join(' '), list);
        }
    }

    void preselection() {
        const auto best = [](const QStringList& tracks) {
            MKVFileInfo info;
            for (const QString& track : tracks)
                info.audioTrackInformation.append({track, 48000});
            return audiopreselection::bestTrack(info, {"ger", "eng"}).value_or(-1);
        };
        QCOMPARE(best({"#1: eng (ac3)", "#2: ger (dts)"}), 1);  // The language before the codec.
        QCOMPARE(best({"#1: ger (dts)", "#2: ger (aac)"}), 1);
        QCOMPARE(best({"#1: ger (dts)", "#2: ger (ac3) [5.1]"}), 1);
        QCOMPARE(best({"#1: ger (dts)", "#2: ger (flac)"}), 0);
        QCOMPARE(best({"#1: fre (aac)", "#2: eng (dts)"}), 1);
        QCOMPARE(best({"#1: fre (dts)", "#2: spa (ac3)", "#3: ita (aac)"}), 2);
        QCOMPARE(best({}), -1);
    }

    void unusualAudioIsTold() {
        TestHome home;
        MKVFileInfo info;
        info.audioTrackInformation = {{"#1: en US (dts)", 48000}, {"#2: unk (dts)", 48000}};
        home.presenter.answer.response = 1001;
        QCOMPARE(audiopreselection::bestTrack(info, {}).value(), 0);
        QCOMPARE(home.presenter.shown.size(), 2);
        QVERIFY(home.presenter.messages().first().startsWith("Warning: this file contains some unusual"));
    }

    void outputNames() {
        const TestHome home;
        QCOMPARE(outputname::outputFileName("a.b.mkv"), "a.b.mp4");
        QCOMPARE(outputname::outputFileName(QString(252, 'x') + ".ts").size(), 255);
        setDefaultInt(kDefaultExtensionKey, 1);
        QCOMPARE(outputname::outputFileName("a.mkv"), "a.m4v");
        QVERIFY(outputname::hasOutputExtension("/x/a.M4V") && !outputname::hasOutputExtension("/x.mp4/a"));
    }

    void sameFileByAnyPath() {
        const TestHome home;
        const QString movie = home.write("a.mkv");
        QFile::link(movie, home.path("link.mkv"));
        QVERIFY(outputname::isSameFile(movie, home.path("link.mkv")));
        QVERIFY(outputname::isSameFile(movie, home.path("./a.mkv")));
        QVERIFY(!outputname::isSameFile(movie, home.write("b.mkv")));
        QVERIFY(!outputname::isSameFile(home.path("x"), home.path("y")));
    }
};

QTEST_GUILESS_MAIN(FileIntakeTest)
#include "tst_FileIntake.moc"
