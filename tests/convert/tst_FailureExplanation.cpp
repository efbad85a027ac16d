#include "convert/FailureExplanation.h"
#include "fakes/Table.h"

class FailureExplanationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void explanations_data() {
        const QString noSpace = "there is not enough free space left";
        const QString volume = "it seems the reason is that the disk or network volume";
        const QString picture = "you are trying to convert a movie with a video track";
        addRows<QString, bool, bool,
                QString>(  // output, embedded and external subtitles, words of the message
            {{"disk full", "av_write: No space left on device", true, true, noSpace},
             {"disk full before the rest", "USER_REMOVEDNo space left on device", false, false, noSpace},
             {"timeout", "Operation timed out", false, false, volume},
             {"descriptor", "Bad file descriptor", false, false, volume},
             {"damaged", "Read error at pos. 5 Error while decoding stream #0:1", false, false,
              "too damaged"},
             {"read error alone", "Read error at pos. 5", false, false, "A problem prevented"},
             {"removed", "USER_REMOVED", true, true, "you've removed/renamed the source movie"},
             {"space", "FREE_SPACE", false, false, "can't be saved on the destination volume"},
             {"codec", "track 0: could not find tag, codec not currently supported in container", true, false,
              picture},
             {"codec, in newer words",
              "Could not find tag for codec ffv1 in stream #0, codec not currently supported in container",
              false, false, picture},
             {"codec of the sound",
              "Could not find tag for codec pcm in stream #1, codec not currently supported in container",
              false, false, "A problem prevented"},
             {"tool", "TOOL_MISSING no such file", true, true, "the conversion tool could not be started"},
             {"embedded subtitles", "?", true, true,
              "A problem occured - this is most likely related to the subtitles embedded"},
             {"subtitle file", "?", false, true,
              "A problem occured - this is most likely related to the subtitle file"}});
    }
    void explanations() {
        const auto [output, embedded, external, words] = row<QString, bool, bool, QString>();
        const auto told = failure::explain({output, {"-i", "a"}, embedded, external});
        QCOMPARE(told.title, words.startsWith("A problem") ? "Information" : "Conversion Failed");
        QVERIFY2(told.message.contains(words), qPrintable(told.message));
        QCOMPARE(told.offersSupport, words.startsWith("A problem prevented"));
    }

    void unknownTrouble() {
        const auto told = failure::explain({QString(401, 'x'), {"-i", "a b"}, false, false});
        QVERIFY(told.message.endsWith("\n\nCommand-line: -i a b\nCommand-output: " + QString(400, 'x')));
    }

    void seemingSuccesses_data() {
        const QString cut = "SOURCE_TRUNCATED";
        const QString lost = "SUBTITLES_LOST";
        addRows<QString, double, int, QString>(  // output, seconds converted, runtime (-1: not known), reason
            {{"matroska", "[matroska,webm @ 0x1] File ended prematurely", 4.0, 10, cut},
             {"mp4", "stream 1, offset 0x4af1f: partial file", 4.0, 10, cut},
             {"avi", "x.avi: corrupt input packet in stream 0", 4.0, 10, cut},
             {"disk error", "x.mkv: Input/output error", 4.0, 10, cut},
             {"only the index is missing", "File ended prematurely", 10.02, 10, ""},
             {"runtime not known", "File ended prematurely", 4.0, -1, cut},
             {"short, but nothing is said", "", 4.0, 10, ""},
             {"disk full at the end", "Error closing file x.mp4: No space left on device", 10.0, 10,
              "OUTPUT_INCOMPLETE"},
             {"not written", "Error writing trailer of x.mp4: Stale file handle", 10.0, 10,
              "OUTPUT_INCOMPLETE"},
             {"subtitles", "Invalid UTF-8 in decoded subtitles text; maybe missing -sub_charenc", 10.0, 10,
              lost},
             {"subtitles of two encodings", "Unable to recode subtitle event \"?\" from UTF-8", 10.0, 10,
              lost}});
    }
    void seemingSuccesses() {
        const auto [output, converted, runtime, reason] = row<QString, double, int, QString>();
        const auto known = runtime < 0 ? std::nullopt : std::optional<qint32>(runtime);
        QCOMPARE(failure::whyNotFinished(output, converted, known).value_or(QString()), reason);
    }
};

QTEST_GUILESS_MAIN(FailureExplanationTest)
#include "tst_FailureExplanation.moc"
