#include "convert/FailureExplanation.h"

#include <QTest>

class FailureExplanationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void explanations_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<bool>("embedded");
        QTest::addColumn<bool>("external");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("beginning");
        const QString failed = "Conversion Failed";
        const QString information = "Information";
        const QString noSpace = "Movie conversion failed because there is not enough free space left";
        QTest::newRow("disk full") << "av_write: No space left on device" << true << true << failed
                                   << noSpace;
        QTest::newRow("disk full before the rest")
            << "USER_REMOVEDNo space left on device" << false << false << failed << noSpace;
        QTest::newRow("timeout")
            << "Operation timed out" << false << false << failed
            << "Movie conversion failed but it seems the reason is that the disk or network volume";
        QTest::newRow("descriptor")
            << "Bad file descriptor" << false << false << failed
            << "Movie conversion failed but it seems the reason is that the disk or network volume";
        QTest::newRow("damaged") << "Read error at pos. 5 Error while decoding stream #0:1" << false << false
                                 << failed
                                 << "Movie conversion failed because the movie seems to be too damaged";
        QTest::newRow("read error alone") << "Read error at pos. 5" << false << false << information
                                          << "A problem prevented the file from being converted.";
        QTest::newRow("removed") << "USER_REMOVED" << true << true << failed
                                 << "Movie conversion failed because you've removed/renamed the source movie";
        QTest::newRow("space") << "FREE_SPACE" << false << false << failed
                               << "The converted file can't be saved on the destination volume";
        QTest::newRow("codec")
            << "track 0: could not find tag, codec not currently supported in container" << true << false
            << failed
            << "Movie conversion failed because you are trying to convert a movie with a video track";
        QTest::newRow("codec, in newer words")
            << "Could not find tag for codec ffv1 in stream #0, codec not currently supported in container"
            << false << false << failed
            << "Movie conversion failed because you are trying to convert a movie with a video track";
        QTest::newRow("codec of the sound")
            << "Could not find tag for codec pcm in stream #1, codec not currently supported in container"
            << false << false << information << "A problem prevented";
        QTest::newRow("tool") << "TOOL_MISSING no such file" << true << true << failed
                              << "Movie conversion failed because the conversion tool could not be started";
        QTest::newRow("embedded subtitles")
            << "?" << true << true << information
            << "A problem occured - this is most likely related to the subtitles embedded";
        QTest::newRow("subtitle file")
            << "?" << false << true << information
            << "A problem occured - this is most likely related to the subtitle file";
    }
    void explanations() {
        QFETCH(QString, output);
        QFETCH(bool, embedded);
        QFETCH(bool, external);
        QFETCH(QString, beginning);
        const auto told = failure::explain({output, {"-i", "a"}, embedded, external});
        QTEST(told.title, "title");
        QVERIFY2(told.message.startsWith(beginning), qPrintable(told.message));
        QCOMPARE(told.offersSupport, beginning.startsWith("A problem prevented"));
    }

    void unknownTrouble() {
        const auto told = failure::explain({QString(401, 'x'), {"-i", "a b"}, false, false});
        QVERIFY(told.offersSupport);
        QVERIFY(told.message.endsWith("\n\nCommand-line: -i a b\nCommand-output: " + QString(400, 'x')));
    }

    void seemingSuccesses_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<double>("converted");
        QTest::addColumn<int>("runtime");  // -1: not known
        QTest::addColumn<QString>("reason");
        QTest::newRow("matroska") << "[matroska,webm @ 0x1] File ended prematurely" << 4.0 << 10
                                  << "SOURCE_TRUNCATED";
        QTest::newRow("mp4") << "stream 1, offset 0x4af1f: partial file" << 4.0 << 10 << "SOURCE_TRUNCATED";
        QTest::newRow("avi") << "x.avi: corrupt input packet in stream 0" << 4.0 << 10 << "SOURCE_TRUNCATED";
        QTest::newRow("disk error") << "x.mkv: Input/output error" << 4.0 << 10 << "SOURCE_TRUNCATED";
        QTest::newRow("only the index is missing") << "File ended prematurely" << 10.02 << 10 << "";
        QTest::newRow("runtime not known") << "File ended prematurely" << 4.0 << -1 << "SOURCE_TRUNCATED";
        QTest::newRow("short, but nothing is said") << "" << 4.0 << 10 << "";
        QTest::newRow("disk full at the end")
            << "Error closing file x.mp4: No space left on device" << 10.0 << 10 << "OUTPUT_INCOMPLETE";
        QTest::newRow("not written") << "Error writing trailer of x.mp4: Stale file handle" << 10.0 << 10
                                     << "OUTPUT_INCOMPLETE";
        QTest::newRow("subtitles") << "Invalid UTF-8 in decoded subtitles text; maybe missing -sub_charenc"
                                   << 10.0 << 10 << "SUBTITLES_LOST";
        QTest::newRow("subtitles of two encodings")
            << "Unable to recode subtitle event \"?\" from UTF-8" << 10.0 << 10 << "SUBTITLES_LOST";
    }
    void seemingSuccesses() {
        QFETCH(QString, output);
        QFETCH(double, converted);
        QFETCH(int, runtime);
        const auto known = runtime < 0 ? std::nullopt : std::optional<qint32>(runtime);
        QTEST(failure::whyNotFinished(output, converted, known).value_or(QString()), "reason");
    }
};

QTEST_GUILESS_MAIN(FailureExplanationTest)
#include "tst_FailureExplanation.moc"
