#include "cli/MovieProbe.h"

#include "app/intake/AudioPreselection.h"
#include "app/intake/Languages.h"
#include "cli/Inputs.h"
#include "cli/Output.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/processes/Interruption.h"

ProbedMovie probeMovie(const QString& path, bool asJson, Run& run) {
    if (const QString reason = whyNotReadable(path); !reason.isEmpty()) return refusedMovie(path, reason);
    ProbedMovie movie{path, {}, {}, {}};
    MKVFileInfo::Probe probe = MKVFileInfo::probe(FileUrl::fromLocalFile(path));
    if (Interruption::signal() != 0) return movie;
    movie.record = std::move(probe.record);
    run.presenter().subject = path;
    run.presenter().onMessage = [&](const ConsolePresenter::Message& message) {
        movie.messages.push_back(message);
    };
    // In text format, the warnings are part of the movie's description.
    run.presenter().writesToStandardError = asJson || !movie.record;
    for (const Verdict& verdict : verdicts::inOrderOfShowing(std::move(probe.verdicts)))
        verdicts::show(verdict);
    if (movie.record) {
        const QStringList languages = audiopreselection::languages(languages::preferredLanguages3Letter());
        movie.bestTrack = audiopreselection::bestTrack(*movie.record, languages);
    }
    run.presenter().onMessage = nullptr;
    return movie;
}

ProbedMovie refusedMovie(const QString& path, const QString& reason) {
    output::error(output::about(path, reason));
    return {path, {}, {}, {{{}, ApplicationInfo::name(), reason}}};
}

void printMessages(const ProbedMovie& movie) {
    for (const auto& message : movie.messages)
        output::line(makeString("  %@: %@", message.title, output::about(movie.file, message.message)));
}
