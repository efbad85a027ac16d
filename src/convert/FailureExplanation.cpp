#include "convert/FailureExplanation.h"

#include "settings/Settings.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"

#include <QMap>

#include <algorithm>

namespace failure {

namespace {

using Kind = RunEnding::Kind;
using enum FailureAction;

/// What is known of a failure.
struct Known {
    const char* reason;
    const char* message;
    QList<FailureAction> actions;
};

const Known& volumeTrouble() {
    static const Known known{
        QT_TRANSLATE_NOOP("Ravelin", "The destination's disk or network volume has problems"),
        QT_TRANSLATE_NOOP(
            "Ravelin",
            "Movie conversion failed but it seems the reason is that the disk or network volume to save the movie is having problems. Try converting to a reliable disk and copying the file to its destination later."),
        {ChooseAnotherFolder, TryAgain}};
    return known;
}

/// Endings that need no look at the tool's output.
const QMap<Kind, Known>& endings() {
    static const QMap<Kind, Known> list = {
        {Kind::NoSpace,
         {QT_TRANSLATE_NOOP("Ravelin", "Not enough free space on the destination volume"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because there is not enough free space left on the destination volume. Please make sure your harddisk has enough free space before starting conversion"),
          {ChooseAnotherFolder, TryAgain}}},
        {Kind::SourceGone,
         {QT_TRANSLATE_NOOP("Ravelin", "The movie was removed or renamed, or its volume is not there"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because you've removed/renamed the source movie file or unmounted its volume."),
          {TryAgain}}},
        {Kind::VolumeTooSmall,
         {QT_TRANSLATE_NOOP("Ravelin",
                            "The destination volume has no room for the movie, or none for large files"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "The converted file can't be saved on the destination volume as there is not enough free space or it doesn't support large files."),
          {ChooseAnotherFolder, TryAgain}}},
        {Kind::ToolMissing,
         {QT_TRANSLATE_NOOP("Ravelin", "The conversion tool could not be started"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because the conversion tool could not be started. Please install the application again."),
          {TryAgain}}},
        {Kind::Incomplete, volumeTrouble()},
        {Kind::SourceTruncated,
         {QT_TRANSLATE_NOOP("Ravelin", "The file ends before the movie does"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because the movie is incomplete: the file ends before the movie does. Please copy or download it again. The source movie was left as it is."),
          {ConvertWhatIsLeft, TryAgain}}},
        {Kind::MuchLost,
         {QT_TRANSLATE_NOOP("Ravelin", "Much of the movie is damaged and would be missing"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because much of the movie is damaged and would be missing. The source movie was left as it is."),
          {ConvertWhatIsLeft, TryAgain}}},
        {Kind::NameTaken,
         {QT_TRANSLATE_NOOP("Ravelin", "Another conversion is writing the output"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because another conversion is writing the same output at this moment. Nothing was changed."),
          {ChooseAnotherFolder, TryAgain}}},
        {Kind::Stalled,
         {QT_TRANSLATE_NOOP("Ravelin", "No progress for too long"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because there was no progress for too long. The disk or network volume of the movie or of its destination may have problems."),
          {TryAgain, ChooseAnotherFolder}}},
        {Kind::Interrupted,
         {QT_TRANSLATE_NOOP("Ravelin", "The conversion was interrupted"),
          QT_TRANSLATE_NOOP("Ravelin", "The conversion was interrupted."),
          {TryAgain}}},
    };
    return list;
}

/// Outputs of the tool that contain all words of a rule. The first rule that matches is used.
struct Rule {
    QStringList words;
    Known known;
};

const QList<Rule>& rules() {
    // Trying again would end the same way.
    static const Known codecNotInContainer{
        QT_TRANSLATE_NOOP("Ravelin", "An MP4 can't hold the picture of this movie"),
        QT_TRANSLATE_NOOP(
            "Ravelin",
            "Movie conversion failed because you are trying to convert a movie with a video track that can't be embedded into MP4s."),
        {}};
    static const Known otherVersion{
        QT_TRANSLATE_NOOP("Ravelin", "The conversion tool is of another version"),
        QT_TRANSLATE_NOOP(
            "Ravelin",
            "Movie conversion failed because the conversion tool does not know what it was asked to do. It is of another version, or not complete. Please install the application again."),
        {TryAgain}};
    static const QList<Rule> list = {
        {{"error while loading shared libraries"}, *endings().constFind(Kind::ToolMissing)},
        {{"Unrecognized option '"}, otherVersion},
        {{"Unknown encoder '"}, otherVersion},
        {{"Operation timed out"}, volumeTrouble()},
        {{"Bad file descriptor"}, volumeTrouble()},
        {{"Read error at pos", "Error while decoding stream"},
         {QT_TRANSLATE_NOOP("Ravelin", "The movie is too damaged to convert"),
          QT_TRANSLATE_NOOP(
              "Ravelin",
              "Movie conversion failed because the movie seems to be too damaged to convert - playback may work but converting it is impossible."),
          {TryAgain}}},
        {{"track 0: could not find tag, codec not currently supported in container"}, codecNotInContainer},
        // Newer tools print the name of the codec. The first stream of an output is the video.
        {{"Could not find tag for codec", "in stream #0, codec not currently supported in container"},
         codecNotInContainer},
    };
    return list;
}

Explanation privateDataTrouble(const QString& trouble) {
    return {
        Texts::tr("Conversion Failed"),
        Texts::tr("A note about the movie can't be saved"),
        Texts::tr(
            "Movie conversion failed because a note about it can't be saved in the application's private data (%1). Please make sure that there is free space and that you may write there. Nothing was changed.")
            .arg(trouble),
        {TryAgain},
        {}};
}

Explanation failed(const Known& known) {
    return {Texts::tr("Conversion Failed"),
            text::localized(known.reason),
            text::localized(known.message),
            known.actions,
            {}};
}

Explanation information(const QString& reason, const QString& message, const QList<FailureAction>& actions) {
    return {Texts::tr("Information"), reason, message, actions, {}};
}

/// The movie's own subtitles come first, as they are there more often.
Explanation subtitleTrouble(const Facts& facts) {
    const QList<FailureAction> forFile = {ReadSubtitlesAs, WithoutSubtitleFile};
    if (!facts.embeddedSubtitlesWereUsed) {
        return information(
            Texts::tr("The subtitle file can't be read"),
            Texts::tr(
                "A problem occured - this is most likely related to the subtitle file you have specified. Please either specify the correct 'External SRT Encoding' in the preferences or just try again without the subtitle file."),
            forFile);
    }
    QList<FailureAction> actions = {WithoutEmbeddedSubtitles};
    if (facts.hasSubtitleFile) actions += forFile;
    actions.append(ShowPreference);
    Explanation told = information(
        Texts::tr("The subtitles of the movie can't be converted"),
        Texts::tr(
            "A problem occured - this is most likely related to the subtitles embedded into the movie. Please disable conversion of 'Internal MKV Subtitles' in the preferences and try again."),
        actions);
    told.preference = settings::DisableBuiltinSubtitles.key;
    return told;
}

}  // namespace

Explanation explain(const Facts& facts) {
    if (const auto known = endings().constFind(facts.ending.kind); known != endings().cend())
        return failed(*known);
    if (facts.ending.kind == Kind::PrivateDataUnwritable) return privateDataTrouble(facts.ending.trouble);
    for (const Rule& rule : rules()) {
        const bool fits = std::all_of(rule.words.cbegin(), rule.words.cend(),
                                      [&](const QString& word) { return facts.output.contains(word); });
        if (fits) return failed(rule.known);
    }
    if (facts.embeddedSubtitlesWereUsed || facts.hasSubtitleFile) return subtitleTrouble(facts);
    constexpr qsizetype kShown = 400;
    return information(
        Texts::tr("A problem prevented the file from being converted"),
        Texts::tr(
            "A problem prevented the file from being converted. You can contact our support with this information so that we can fix this problem.\n\nCommand-line: %1\nCommand-output: %2")
            .arg(facts.arguments.join(u' '), text::clamp(facts.output, kShown)),
        {SendToSupport, TryAgain});
}

bool explainsSomething(QStringView line) {
    return runending::isDecisive(line) || std::ranges::any_of(rules(), [&](const Rule& rule) {
               return text::containsAny(line, rule.words);
           });
}

}  // namespace failure
