#include "convert/FailureExplanation.h"

#include <QTest>

class FailureExplanationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void explanations() {
        const auto isToldOf = [](const QString& words, const QString& output, bool embedded = false,
                                 bool external = false) {
            const auto told = failure::explain({output, {"-i", "a"}, embedded, external});
            return told.message.contains(words) &&
                   told.title == (words.startsWith("A problem") ? "Information" : "Conversion Failed") &&
                   told.offersSupport == words.startsWith("A problem prevented");
        };
        const QString noSpace = "there is not enough free space left";
        QVERIFY(isToldOf(noSpace, "av_write: No space left on device", true, true));
        QVERIFY(isToldOf(noSpace, "USER_REMOVEDNo space left on device"));  // The disk before the rest.
        const QString volume = "it seems the reason is that the disk or network volume";
        QVERIFY(isToldOf(volume, "Operation timed out"));
        QVERIFY(isToldOf(volume, "Bad file descriptor"));
        QVERIFY(isToldOf("too damaged", "Read error at pos. 5 Error while decoding stream #0:1"));
        QVERIFY(isToldOf("A problem prevented", "Read error at pos. 5"));
        QVERIFY(isToldOf("you've removed/renamed the source movie", "USER_REMOVED", true, true));
        QVERIFY(isToldOf("can't be saved on the destination volume", "FREE_SPACE"));
        const QString picture = "you are trying to convert a movie with a video track";
        const QString unsupported = ", codec not currently supported in container";
        QVERIFY(isToldOf(picture, "track 0: could not find tag" + unsupported, true));
        QVERIFY(isToldOf(picture, "Could not find tag for codec ffv1 in stream #0" + unsupported));
        QVERIFY(
            isToldOf("A problem prevented", "Could not find tag for codec pcm in stream #1" + unsupported));
        QVERIFY(
            isToldOf("the conversion tool could not be started", "TOOL_MISSING no such file", true, true));
        const QString subtitles = "A problem occured - this is most likely related to the subtitle";
        QVERIFY(isToldOf(subtitles + "s embedded", "?", true, true));
        QVERIFY(isToldOf(subtitles + " file", "?", false, true));
    }

    void unknownTrouble() {
        const auto told = failure::explain({QString(401, 'x'), {"-i", "a b"}, false, false});
        QVERIFY(told.message.endsWith("\n\nCommand-line: -i a b\nCommand-output: " + QString(400, 'x')));
    }

    void seemingSuccesses() {
        const auto reason = [](const QString& said, double converted = 4.0, std::optional<qint32> all = 10) {
            return failure::whyNotFinished(said, converted, all).value_or(QString());
        };
        const QString cut = "SOURCE_TRUNCATED";
        QCOMPARE(reason("[matroska,webm @ 0x1] File ended prematurely"), cut);
        QCOMPARE(reason("stream 1, offset 0x4af1f: partial file"), cut);
        QCOMPARE(reason("x.avi: corrupt input packet in stream 0"), cut);
        QCOMPARE(reason("x.mkv: Input/output error"), cut);
        QCOMPARE(reason("File ended prematurely", 10.02), "");  // Only the index is missing.
        QCOMPARE(reason("File ended prematurely", 4.0, std::nullopt), cut);
        QCOMPARE(reason(""), "");
        QCOMPARE(reason("Error closing file x.mp4: No space left on device", 10.0), "OUTPUT_INCOMPLETE");
        QCOMPARE(reason("Error writing trailer of x.mp4: Stale file handle", 10.0), "OUTPUT_INCOMPLETE");
        const QString lost = "SUBTITLES_LOST";
        QCOMPARE(reason("Invalid UTF-8 in decoded subtitles text; maybe missing -sub_charenc", 10.0), lost);
        QCOMPARE(reason("Unable to recode subtitle event \"?\" from UTF-8", 10.0), lost);
    }
};

QTEST_GUILESS_MAIN(FailureExplanationTest)
#include "tst_FailureExplanation.moc"
