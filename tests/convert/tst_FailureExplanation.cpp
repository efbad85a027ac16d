#include "convert/FailureExplanation.h"
#include "fakes/Table.h"

using Kind = RunEnding::Kind;

class FailureExplanationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void explanations_data() {
        const QString noSpace = "there is not enough free space left";
        const QString volume = "it seems the reason is that the disk or network volume";
        const QString source = "you've removed/renamed the source movie";
        const QString damaged = "too damaged";
        const QString picture = "you are trying to convert a movie with a video track";
        const QString unsupported = ", codec not currently supported in container";
        const QString version = "the conversion tool does not know what it was asked to do";
        const QString embedded = "A problem occured - this is most likely related to the subtitles embedded";
        const QString external = "A problem occured - this is most likely related to the subtitle file";
        const QString unknown = "A problem prevented";
        const QString decoding = "Error while decoding stream #0:1";
        const QString folder = "chooseAnotherFolder tryAgain";
        const QString again = "tryAgain";
        const QString left = "convertWhatIsLeft tryAgain";
        const QString support = "sendToSupport tryAgain";
        const QString file = "readSubtitlesAs withoutSubtitleFile";
        // ending, output, subtitles in the movie and beside it, message, actions
        addRows<Kind, QString, QString, QString, QString>(
            {{"no space", Kind::NoSpace, "av_write: No space left on device", "me", noSpace, folder},
             {"time-out", Kind::ToolFailed, "Operation timed out", "", volume, folder},
             {"bad descriptor", Kind::ToolFailed, "Bad file descriptor", "", volume, folder},
             {"not written to the end", Kind::Incomplete, "", "m", volume, folder},
             {"damaged", Kind::ToolFailed, "Read error at pos. 5 " + decoding, "", damaged, again},
             {"half of the words", Kind::ToolFailed, "Read error at pos. 5", "", unknown, support},
             {"source gone", Kind::SourceGone, "USER_REMOVED", "me", source, again},
             {"only the movie's name", Kind::ToolFailed, "USER_REMOVED.mkv: FREE_SPACE", "", unknown,
              support},
             {"volume too small", Kind::VolumeTooSmall, "FREE_SPACE", "", "can't be saved on the destination",
              folder},
             {"truncated", Kind::SourceTruncated, "File ended prematurely", "m", "the movie is incomplete",
              left},
             {"much lost", Kind::MuchLost, "", "m", "much of the movie is damaged", left},
             {"codec", Kind::ToolFailed, "track 0: could not find tag" + unsupported, "m", picture, ""},
             {"its newer words", Kind::ToolFailed,
              "Could not find tag for codec ffv1 in stream #0" + unsupported, "", picture, ""},
             {"of the sound", Kind::ToolFailed, "Could not find tag for codec pcm in stream #1" + unsupported,
              "", unknown, support},
             {"older tool", Kind::ToolFailed, "Unrecognized option 'fps_mode'.", "m", version, again},
             {"tool without parts", Kind::ToolFailed, "Unknown encoder 'ac3'", "", version, again},
             {"broken tool", Kind::ToolFailed,
              "ffmpeg: error while loading shared libraries: libz.so.1: none", "",
              "the conversion tool could not be started", again},
             {"no tool", Kind::ToolMissing, "TOOL_MISSING", "me", "the conversion tool could not be started",
              again},
             {"name taken", Kind::NameTaken, "", "me", "another conversion is writing the same output",
              folder},
             {"no note", Kind::PrivateDataUnwritable, "", "me",
              "in the application's private data (/data: full)", again},
             {"interrupted", Kind::Interrupted, "", "me", "The conversion was interrupted.", again},
             {"embedded subtitles", Kind::ToolFailed, "?", "m", embedded,
              "withoutEmbeddedSubtitles showPreference"},
             {"both", Kind::ToolFailed, "?", "me", embedded,
              "withoutEmbeddedSubtitles " + file + " showPreference"},
             {"subtitle file", Kind::ToolFailed, "?", "e", external, file},
             {"subtitles lost", Kind::SubtitlesLost, "Unable to recode", "e", external, file}});
    }
    void explanations() {
        const auto [kind, output, subtitles, words, actions] =
            row<Kind, QString, QString, QString, QString>();
        RunEnding ending = RunEnding::of(kind);
        ending.trouble = "/data: full";
        const auto told = failure::explain(
            {ending, output, {"-i", "a"}, subtitles.contains(u'm'), subtitles.contains(u'e')});
        QVERIFY2(told.message.contains(words), qPrintable(told.message));
        QCOMPARE(told.title, words.startsWith("A problem") ? "Information" : "Conversion Failed");
        QStringList offered;
        for (const FailureAction action : told.actions)
            offered.append(wordOf(action));
        QCOMPARE(offered.join(u' '), actions);
        QCOMPARE(told.preference.isEmpty(), !offered.contains("showPreference"));
    }

    void unknownTrouble() {
        const auto told = failure::explain(
            {RunEnding::of(Kind::ToolFailed), QString(401, 'x'), {"-i", "a b"}, false, false});
        QVERIFY(told.message.endsWith("\n\nCommand-line: -i a b\nCommand-output: " + QString(400, 'x')));
    }

    void endings_data() {
        constexpr auto none = -1;
        const QString cut = "[matroska,webm @ 0x1] File ended prematurely";
        addRows<int, QString, double, int, Kind>(  // status, output, converted and whole seconds, ending
            {{"success", 0, "", 10.0, 10, Kind::Succeeded},
             {"cut off", 0, cut, 4.0, 10, Kind::SourceTruncated},
             {"of unknown length", 0, cut, 4.0, none, Kind::SourceTruncated},
             {"only the index is missing", 0, cut, 10.02, 10, Kind::Succeeded},
             {"partial", 0, "stream 1, offset 0x4af1f: partial file", 4.0, 10, Kind::SourceTruncated},
             {"corrupt", 0, "x.avi: corrupt input packet in stream 0", 4.0, 10, Kind::SourceTruncated},
             {"read error", 0, "x.mkv: Input/output error", 4.0, 10, Kind::SourceTruncated},
             {"cut off and failed", 1, cut, 4.0, 10, Kind::ToolFailed},
             {"full", 0, "Error closing file x.mp4: No space left on device", 10.0, 10, Kind::NoSpace},
             {"full and failed", 1, "No space left on device", 4.0, 10, Kind::NoSpace},
             {"trailer", 0, "Error writing trailer of x.mp4: Stale file handle", 10.0, 10, Kind::Incomplete},
             {"volume", 1, "av_interleaved_write_frame(): Input/output error", 4.0, 10, Kind::Incomplete},
             {"newer words", 1, "Error muxing a packetError writing trailer: File too large", 4.0, 10,
              Kind::Incomplete},
             {"fault of the movie", 1, "av_interleaved_write_frame(): Invalid argument", 4.0, 10,
              Kind::ToolFailed},
             {"quota", 1, "Error closing file x: Disk quota exceeded", 4.0, 10, Kind::NoSpace},
             {"progress log", 0,
              "Error closing progress log, loss of information possible: No space left on device", 10.0, 10,
              Kind::Succeeded},
             {"bytes", 0, "Invalid UTF-8 in decoded subtitles text; maybe missing -sub_charenc", 10.0, 10,
              Kind::SubtitlesLost},
             {"encoding", 0, "Unable to recode subtitle event \"?\" from UTF-8", 10.0, 10,
              Kind::SubtitlesLost}});
    }
    void endings() {
        const auto [status, said, converted, whole, kind] = row<int, QString, double, int, Kind>();
        runending::Evidence evidence{{ToolExit::Reason::Exited, status, {}}, said, 1, converted, {}};
        if (whole >= 0) evidence.runtimeSeconds = whole;
        QCOMPARE(runending::decide(evidence).kind, kind);
        evidence.keepsDamaged = true;
        const RunEnding kept = runending::decide(evidence);
        QCOMPARE(kept.kind, kind == Kind::SourceTruncated ? Kind::Succeeded : kind);
        QCOMPARE(kept.isDamaged, kind == Kind::SourceTruncated);
    }
};

QTEST_GUILESS_MAIN(FailureExplanationTest)
#include "tst_FailureExplanation.moc"
