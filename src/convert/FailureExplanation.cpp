#include "convert/FailureExplanation.h"

#include "support/base/Text.h"
#include "support/base/Texts.h"

#include <algorithm>

namespace failure {

namespace {

/// The message for an output that contains all words of a rule. The first rule that matches is used.
struct Rule {
    QStringList words;
    const char* message;
};

constexpr const char* kNoSpace = "No space left on device";
constexpr const char* kCodecNotInContainer = RAVELIN_TEXT(
    "Movie conversion failed because you are trying to convert a movie with a video track that can't be embedded into MP4s.");

const QList<Rule>& rules() {
    static const char* const volumeTrouble = RAVELIN_TEXT(
        "Movie conversion failed but it seems the reason is that the disk or network volume to save the movie is having problems. Try converting to a reliable disk and copying the file to its destination later.");
    static const QList<Rule> list = {
        {{kNoSpace},
         RAVELIN_TEXT(
             "Movie conversion failed because there is not enough free space left on the destination volume. Please make sure your harddisk has enough free space before starting conversion")},
        {{"Operation timed out"}, volumeTrouble},
        {{"Bad file descriptor"}, volumeTrouble},
        {{"Read error at pos", "Error while decoding stream"},
         RAVELIN_TEXT(
             "Movie conversion failed because the movie seems to be too damaged to convert - playback may work but converting it is impossible.")},
        {{kUserRemoved},
         RAVELIN_TEXT(
             "Movie conversion failed because you've removed/renamed the source movie file or unmounted its volume.")},
        {{kFreeSpace},
         RAVELIN_TEXT(
             "The converted file can't be saved on the destination volume as there is not enough free space or it doesn't support large files.")},
        {{"track 0: could not find tag, codec not currently supported in container"}, kCodecNotInContainer},
        // Newer tools print the name of the codec. The first stream of an output is the video.
        {{"Could not find tag for codec", "in stream #0, codec not currently supported in container"},
         kCodecNotInContainer},
        {{kToolMissing},
         RAVELIN_TEXT(
             "Movie conversion failed because the conversion tool could not be started. Please install the application again.")},
        {{kOutputIncomplete}, volumeTrouble},
        {{kTruncated},
         RAVELIN_TEXT(
             "Movie conversion failed because the movie is incomplete: the file ends before the movie does. Please copy or download it again. The source movie was left as it is.")},
    };
    return list;
}

// Messages of the tool in a run that still exits with status 0.
const QStringList kUnwritten = {kNoSpace, "Error writing trailer of", "Error closing file"};
const QStringList kUnread = {"File ended prematurely", ": partial file", "corrupt input packet",
                             "Input/output error"};
const QStringList kUndecoded = {"Invalid UTF-8 in decoded subtitles text", "Unable to recode subtitle event"};

Explanation failed(const char* message) {
    return {Texts::tr("Conversion Failed"), text::localized(message), false};
}

Explanation information(const QString& message, bool offersSupport) {
    return {Texts::tr("Information"), message, offersSupport};
}

}  // namespace

Explanation explain(const Facts& facts) {
    for (const Rule& rule : rules()) {
        const bool fits = std::all_of(rule.words.cbegin(), rule.words.cend(),
                                      [&](const QString& word) { return facts.output.contains(word); });
        if (fits) return failed(rule.message);
    }
    if (facts.embeddedSubtitlesWereUsed) {
        return information(
            Texts::tr(
                "A problem occured - this is most likely related to the subtitles embedded into the movie. Please disable conversion of 'Internal MKV Subtitles' in the preferences and try again."),
            false);
    }
    if (facts.hasSubtitleFile) {
        return information(
            Texts::tr(
                "A problem occured - this is most likely related to the subtitle file you have specified. Please either specify the correct 'External SRT Encoding' in the preferences or just try again without the subtitle file."),
            false);
    }
    constexpr qsizetype kShown = 400;
    return information(
        Texts::tr(
            "A problem prevented the file from being converted. You can contact our support with this information so that we can fix this problem.\n\nCommand-line: %1\nCommand-output: %2")
            .arg(facts.arguments.join(u' '), text::clamp(facts.output, kShown)),
        true);
}

Explanation noSpaceLeft() {
    return failed(rules().first().message);
}

bool saysNoSpaceLeft(const QString& output) {
    return output.contains(kNoSpace);
}

bool explainsSomething(QStringView line) {
    for (const Rule& rule : rules()) {
        if (text::containsAny(line, rule.words)) return true;
    }
    return text::containsAny(line, kUnwritten) || text::containsAny(line, kUnread) ||
           text::containsAny(line, kUndecoded);
}

std::optional<QString> whyNotFinished(const QString& output, double convertedSeconds,
                                      std::optional<qint32> runtimeSeconds) {
    if (text::containsAny(output, kUnwritten)) return kOutputIncomplete;
    const bool isShort = !runtimeSeconds || convertedSeconds < *runtimeSeconds;
    if (isShort && text::containsAny(output, kUnread)) return kTruncated;
    if (text::containsAny(output, kUndecoded)) return kSubtitlesLost;
    return std::nullopt;
}

}  // namespace failure
