#include "app/AudioPreselection.h"
#include "app/Destination.h"
#include "app/Languages.h"
#include "app/MovieFiles.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/Defaults.h"

#include <QFile>
#include <QTest>

class MovieFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sorting() {
        const TestHome home;
        const QString pictures = home.write("dvd.sub", QByteArray("\0\0\1\xba"
                                                                  "rest",
                                                                  8));
        const QString plain = home.write("text.sub", "{1}{2}Hello");
        const auto sorted =
            moviefiles::sorted({"/a/B.MKV", "/a/x.srt", pictures, plain, "/a/notes.txt", "/a/c.webm",
                                "/a/x.ass", "/a/noextension", home.path("gone.sub")});
        QCOMPARE(sorted.movies, (QStringList{"/a/B.MKV", "/a/c.webm"}));
        QCOMPARE(sorted.subtitles,
                 (moviefiles::SubtitleFiles{{"/a/x", "/a/x.ass"}, {home.path("text"), plain}}));
    }

    void subtitleMatching_data() {
        QTest::addColumn<QStringList>("subtitles");
        QTest::addColumn<QString>("movie");
        QTest::addColumn<QString>("found");
        const QStringList both = {"/m/Movie.srt", "/m/Movie 2.srt"};
        QTest::newRow("own name first") << both << "/m/Movie.mkv"
                                        << "/m/Movie.srt";
        QTest::newRow("the longer name") << both << "/m/Movie 2.mkv"
                                         << "/m/Movie 2.srt";
        QTest::newRow("a longer stem serves") << QStringList{"/m/Movie 2.srt"} << "/m/Movie.mkv"
                                              << "/m/Movie 2.srt";
        QTest::newRow("with a language") << QStringList{"/m/Movie.en.srt"} << "/m/Movie.mkv"
                                         << "/m/Movie.en.srt";
        QTest::newRow("a shorter stem does not") << QStringList{"/m/Movie.srt"} << "/m/Movie 2.mkv"
                                                 << "";
        QTest::newRow("another folder") << QStringList{"/n/Movie.srt"} << "/m/Movie.mkv"
                                        << "";
        QTest::newRow("another case") << QStringList{"/m/movie.srt"} << "/m/Movie.mkv"
                                      << "";
        QTest::newRow("later in the order") << QStringList{"/m/Z.srt"} << "/m/A.mkv"
                                            << "";
    }
    void subtitleMatching() {
        QFETCH(QStringList, subtitles);
        QFETCH(QString, movie);
        QTEST(moviefiles::subtitleFor(movie, moviefiles::sorted(subtitles).subtitles), "found");
    }

    void foldersAreSearchedInNameOrder() {
        const TestHome home;
        for (const char* name : {"f/b.mkv", "f/a/z.mp4", "f/a/y.srt", "f/.hidden.mkv", "f/c.txt", "f/d.AVI"})
            home.write(name);
        QFile::link(home.path("f"), home.path("f/loop"));
        QStringList expected;
        for (const char* name : {"f/.hidden.mkv", "f/a/y.srt", "f/a/z.mp4", "f/b.mkv", "f/d.AVI"})
            expected.append(home.path(name));
        QCOMPARE(moviefiles::filesBelow(home.path("f")), expected);
        QCOMPARE(moviefiles::withFoldersSearched({"/x.mkv", home.path("f/a")}),
                 (QStringList{"/x.mkv", home.path("f/a/y.srt"), home.path("f/a/z.mp4")}));
    }

    void languageCodes() {
        QCOMPARE(languages::threeLetterCodes({"en-US", "de", "fr-CA", "bo", "aa", "zh_TW", "tlh-AQ", "C"}),
                 (QStringList{"eng", "ger", "fre", "tib", "aar", "chi", "tlh-AQ", "C"}));
        QCOMPARE(languages::twoLetterCodes({"en-US", "de"}), (QStringList{"en", "de"}));
    }

    void languagesToLookFor() {
        const TestHome home;
        const std::pair<int, QStringList> expected[] = {
            {0, {"ger", "eng"}}, {2, {"eng"}}, {8, {"rus"}}, {9, {"ger", "eng"}}};
        for (const auto& [setting, languages] : expected) {
            setDefaultInt(kDefaultAudioKey, setting);
            QCOMPARE(audiopreselection::languages({"ger", "eng"}), languages);
        }
    }

    void preselection_data() {
        QTest::addColumn<QStringList>("tracks");
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<int>("best");  // -1: none
        QTest::newRow("language before codec")
            << QStringList{"#1: eng (ac3)", "#2: ger (dts)"} << QStringList{"ger", "eng"} << 1;
        QTest::newRow("AAC of one language")
            << QStringList{"#1: ger (dts)", "#2: ger (aac)"} << QStringList{"ger"} << 1;
        QTest::newRow("AC3 where no AAC is")
            << QStringList{"#1: ger (dts)", "#2: ger (ac3) [5.1]"} << QStringList{"ger"} << 1;
        QTest::newRow("first where neither is")
            << QStringList{"#1: ger (dts)", "#2: ger (flac)"} << QStringList{"ger"} << 0;
        QTest::newRow("second language")
            << QStringList{"#1: fre (aac)", "#2: eng (dts)"} << QStringList{"ger", "eng"} << 1;
        QTest::newRow("no listed language")
            << QStringList{"#1: fre (dts)", "#2: spa (ac3)", "#3: ita (aac)"} << QStringList{"ger"} << 2;
        QTest::newRow("no audio") << QStringList{} << QStringList{"ger"} << -1;
    }
    void preselection() {
        QFETCH(QStringList, tracks);
        QFETCH(QStringList, languages);
        MKVFileInfo info;
        for (const QString& track : tracks)
            info.audioTrackInformation.append({track, 48000});
        QTEST(static_cast<int>(audiopreselection::bestTrack(info, languages).value_or(-1)), "best");
    }

    void unusualAudioIsTold() {
        TestHome home;
        MKVFileInfo info;
        info.audioTrackInformation = {{"#1: en US (dts)", 48000}, {"#2: unk (dts)", 48000}};
        home.presenter.answer.response = 1001;
        QCOMPARE(audiopreselection::bestTrack(info, {}).value(), 0);
        QCOMPARE(home.presenter.shown.size(), 2);
        QVERIFY(home.presenter.messages().first().startsWith(
            "Warning: this file contains some unusual audio-stream"));
    }

    void outputNames() {
        const TestHome home;
        QCOMPARE(destination::outputFileName("a.b.mkv"), "a.b.mp4");
        QCOMPARE(destination::outputFileName(QString(252, 'x') + ".ts").size(), 255);
        setDefaultInt(kDefaultExtensionKey, 1);
        QCOMPARE(destination::outputFileName("a.mkv"), "a.m4v");
        QVERIFY(destination::hasOutputExtension("/x/a.M4V") &&
                !destination::hasOutputExtension("/x.mp4/a.mkv"));
    }

    void sameFileByAnyPath() {
        const TestHome home;
        const QString movie = home.write("a.mkv");
        QFile::link(movie, home.path("link.mkv"));
        QVERIFY(destination::isSameFile(movie, home.path("link.mkv")));
        QVERIFY(destination::isSameFile(movie, home.path("./a.mkv")));
        QVERIFY(!destination::isSameFile(movie, home.write("b.mkv")));
        QVERIFY(!destination::isSameFile(home.path("x"), home.path("y")));
    }
};

QTEST_GUILESS_MAIN(MovieFilesTest)
#include "tst_MovieFiles.moc"
