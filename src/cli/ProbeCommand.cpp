#include "cli/Commands.h"
#include "cli/ExitStatus.h"
#include "cli/Inputs.h"
#include "cli/MovieProbe.h"
#include "cli/Output.h"
#include "support/base/Texts.h"
#include "support/processes/Interruption.h"

namespace {

QString joined(const QList<int>& numbers) {
    QStringList texts;
    for (const int number : numbers)
        texts.append(QString::number(number));
    return texts.join(", ");
}

void printText(const ProbedMovie& movie) {
    const MKVFileInfo& record = *movie.record;
    output::line(output::shown(record.fileName));
    output::line("  " + record.informationString);
    const auto& tracks = record.audioTrackInformation;
    if (tracks.isEmpty()) output::line("  " + Texts::tr("Audio: none"));
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        output::line("  " + Texts::tr("Audio %1: %2").arg(QString::number(i), tracks[i].text) +
                     (movie.bestTrack == i ? "  " + Texts::tr("(preselected)") : QString()));
    }
    const auto& subtitles = record.subtitleTrackIDs;
    output::line("  " + (subtitles.isEmpty() ? Texts::tr("Subtitles: none")
                                             : Texts::tr("Subtitles: %1").arg(joined(subtitles))));
    printMessages(movie);
}

}  // namespace

int runProbe(const ProbeOptions& options, const CommandLine& line) {
    const Interruption interruption;
    Run run(line.overrides, Run::DesktopUse::None);
    int status = exitstatus::kSuccess;
    for (const QString& path : options.movies) {
        const ProbedMovie movie = probeMovie(absolutePath(path), options.json, run);
        if (const int signal = Interruption::signal()) return exitstatus::afterSignal(signal);
        if (!movie.record) status = exitstatus::kFailure;
        if (options.json) {
            output::json(json::probed(movie.file, movie.record, movie.bestTrack, movie.messages));
        } else if (movie.record) {
            printText(movie);
        }
    }
    return status;
}
