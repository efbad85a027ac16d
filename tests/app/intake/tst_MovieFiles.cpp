#include "app/destinations/OutputName.h"
#include "app/intake/AudioPreselection.h"
#include "app/intake/Languages.h"
#include "app/intake/MovieFiles.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/store/Defaults.h"

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
        // Codes that are languages only in some tables; text that only looks like the end of a row.
        QCOMPARE(languages::threeLetterCodes({"no-NO", "nb", "tl", "tw-GH", "bh", "e", ""}),
                 (QStringList{"nor", "nob", "tgl", "twi", "bih", "e", ""}));
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
        QVERIFY(home.presenter.messages().first().startsWith(
            "Warning: this file contains some unusual audio-stream"));
    }

    void outputNames() {
        const TestHome home;
        QCOMPARE(outputname::outputFileName("a.b.mkv"), "a.b.mp4");
        QCOMPARE(outputname::outputFileName(QString(252, 'x') + ".ts").size(), 255);
        setDefaultInt(kDefaultExtensionKey, 1);
        QCOMPARE(outputname::outputFileName("a.mkv"), "a.m4v");
        QVERIFY(outputname::hasOutputExtension("/x/a.M4V") &&
                !outputname::hasOutputExtension("/x.mp4/a.mkv"));
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

QTEST_GUILESS_MAIN(MovieFilesTest)
#include "tst_MovieFiles.moc"
