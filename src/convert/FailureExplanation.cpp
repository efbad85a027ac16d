#include "convert/FailureExplanation.h"

#include "support/base/Text.h"
#include "support/base/Texts.h"

#include <algorithm>

namespace failure {

namespace {

using Kind = RunEnding::Kind;

constexpr const char* kVolumeTrouble = RAVELIN_TEXT(
    "Movie conversion failed but it seems the reason is that the disk or network volume to save the movie is having problems. Try converting to a reliable disk and copying the file to its destination later.");
constexpr const char* kCodecNotInContainer = RAVELIN_TEXT(
    "Movie conversion failed because you are trying to convert a movie with a video track that can't be embedded into MP4s.");

/// The message for an ending that needs no look at the tool's output; null for the others.
const char* messageOf(Kind kind) {
    switch (kind) {
        case Kind::NoSpace:
            return RAVELIN_TEXT(
                "Movie conversion failed because there is not enough free space left on the destination volume. Please make sure your harddisk has enough free space before starting conversion");
        case Kind::SourceGone:
            return RAVELIN_TEXT(
                "Movie conversion failed because you've removed/renamed the source movie file or unmounted its volume.");
        case Kind::VolumeTooSmall:
            return RAVELIN_TEXT(
                "The converted file can't be saved on the destination volume as there is not enough free space or it doesn't support large files.");
        case Kind::ToolMissing:
            return RAVELIN_TEXT(
                "Movie conversion failed because the conversion tool could not be started. Please install the application again.");
        case Kind::Incomplete:
            return kVolumeTrouble;
        case Kind::SourceTruncated:
            return RAVELIN_TEXT(
                "Movie conversion failed because the movie is incomplete: the file ends before the movie does. Please copy or download it again. The source movie was left as it is.");
        case Kind::MuchLost:
            return RAVELIN_TEXT(
                "Movie conversion failed because much of the movie is damaged and would be missing. The source movie was left as it is.");
        case Kind::Interrupted:
            return RAVELIN_TEXT("The conversion was interrupted.");
        case Kind::Succeeded:
        case Kind::ToolFailed:
        case Kind::SubtitlesLost:
            break;
    }
    return nullptr;
}

/// The message for an output of the tool that contains all words of a rule. The first rule that matches is
/// used.
struct Rule {
    QStringList words;
    const char* message;
};

const QList<Rule>& rules() {
    static const QList<Rule> list = {
        {{"Operation timed out"}, kVolumeTrouble},
        {{"Bad file descriptor"}, kVolumeTrouble},
        {{"Read error at pos", "Error while decoding stream"},
         RAVELIN_TEXT(
             "Movie conversion failed because the movie seems to be too damaged to convert - playback may work but converting it is impossible.")},
        {{"track 0: could not find tag, codec not currently supported in container"}, kCodecNotInContainer},
        // Newer tools print the name of the codec. The first stream of an output is the video.
        {{"Could not find tag for codec", "in stream #0, codec not currently supported in container"},
         kCodecNotInContainer},
    };
    return list;
}

Explanation failed(const char* message) {
    return {Texts::tr("Conversion Failed"), text::localized(message), false};
}

Explanation information(const QString& message, bool offersSupport) {
    return {Texts::tr("Information"), message, offersSupport};
}

}  // namespace

Explanation explain(const Facts& facts) {
    if (const char* message = messageOf(facts.ending.kind)) return failed(message);
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

bool explainsSomething(QStringView line) {
    return runending::isDecisive(line) || std::ranges::any_of(rules(), [&](const Rule& rule) {
               return text::containsAny(line, rule.words);
           });
}

}  // namespace failure
