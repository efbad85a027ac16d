#include "app/intake/MovieFiles.h"
#include "cli/Commands.h"
#include "cli/ExitStatus.h"
#include "cli/Inputs.h"
#include "cli/MovieProbe.h"
#include "cli/Output.h"
#include "convert/plan/ConversionCommand.h"
#include "convert/plan/PlanText.h"
#include "support/base/Texts.h"
#include "support/processes/Interruption.h"

namespace {

/// The arguments of the conversion, with words for the files that are made when it starts.
QStringList argumentsOf(const ConversionPlan& plan, const MKVFileInfo& info) {
    const QString subtitles = info.subtitleFileURL ? info.subtitleFileURL->toLocalFile() : QString();
    return toolArguments(plan, {info.fileURL.toLocalFile(), subtitles, "PROGRESS", "OUTPUT"}, false);
}

void print(const ProbedMovie& movie, qsizetype audioTrackIndex, bool asJson) {
    if (!movie.record) {
        if (asJson) output::json(json::refused(movie.file, movie.messages));
        return;
    }
    const ConversionPlan plan = makePlan(*movie.record, audioTrackIndex, ConversionSettings::current());
    if (asJson) {
        output::json(json::planned(*movie.record, plan, argumentsOf(plan, *movie.record), movie.messages));
        return;
    }
    output::line(output::shown(movie.record->fileName));
    for (const QString& line : plantext::lines(plan))
        output::line("  " + line);
    printMessages(movie);
}

}  // namespace

int runPlan(const PlanOptions& options, const CommandLine& line) {
    const Inputs inputs = findInputs(options.paths);
    if (inputs.isEmpty()) return wrongUsage(Inputs::noMovie(), "plan");

    const Interruption interruption;
    Run run(line.overrides, Run::DesktopUse::None);
    int status = exitstatus::kSuccess;
    const auto report = [&](const ProbedMovie& movie, qsizetype audioTrackIndex) {
        print(movie, audioTrackIndex, options.json);
        if (!movie.record) status = exitstatus::kFailure;
    };
    for (const Inputs::Refusal& refusal : inputs.refusals)
        report(refusedMovie(refusal.file, refusal.reason), 0);
    const moviefiles::SubtitleFiles subtitles = moviefiles::sorted(inputs.subtitles).subtitles;
    for (const QString& path : inputs.movies) {
        ProbedMovie movie = probeMovie(path, options.json, run);
        if (const int signal = Interruption::signal()) return exitstatus::afterSignal(signal);
        const qsizetype track = options.audio.value_or(movie.bestTrack.value_or(0));
        if (movie.record) {
            const QString subtitle = moviefiles::subtitleFor(path, subtitles);
            if (!subtitle.isEmpty()) movie.record->subtitleFileURL = FileUrl::fromLocalFile(subtitle);
            const qsizetype count = movie.record->audioTrackInformation.size();
            if (options.audio && track >= count) {
                movie.record.reset();
                movie.messages.push_back(
                    refusedMovie(path, noSuchAudioTrack(path, count, track)).messages.front());
            }
        }
        report(movie, track);
    }
    return status;
}
