#include "app/intake/AudioPreselection.h"
#include "app/intake/Languages.h"
#include "cli/Commands.h"
#include "cli/ExitStatus.h"
#include "cli/Inputs.h"
#include "cli/JsonRecords.h"
#include "cli/Output.h"
#include "cli/Run.h"
#include "settings/Keys.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"
#include "support/processes/Interruption.h"
#include "support/store/Defaults.h"

#include <QUrl>

namespace {

QString joined(const QList<int>& numbers) {
    QStringList texts;
    for (const int number : numbers)
        texts.append(QString::number(number));
    return texts.join(", ");
}

void printText(const MKVFileInfo& record, std::optional<qsizetype> bestTrack,
               const json::Messages& messages) {
    output::line(record.fileName);
    output::line("  " + record.informationString);
    const auto& tracks = record.audioTrackInformation;
    if (tracks.isEmpty()) output::line("  " + Texts::tr("Audio: none"));
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        output::line("  " + Texts::tr("Audio %1: %2").arg(QString::number(i), tracks[i].text) +
                     (bestTrack == i ? "  " + Texts::tr("(preselected)") : QString()));
    }
    const auto& subtitles = record.subtitleTrackIDs;
    output::line("  " + (subtitles.isEmpty() ? Texts::tr("Subtitles: none")
                                             : Texts::tr("Subtitles: %1").arg(joined(subtitles))));
    for (const auto& message : messages)
        output::line(makeString("  %@: %@", message.title, message.message));
}

/// Probes one movie and prints the result. Returns false if the movie is refused.
bool probeMovie(const QString& path, bool asJson, Run& run) {
    json::Messages messages;
    run.presenter().onMessage = [&](const ConsolePresenter::Message& message) {
        messages.push_back(message);
    };
    std::optional<MKVFileInfo> record;
    if (const QString reason = whyNotReadable(path); reason.isEmpty()) {
        MKVFileInfo::Probe probe = MKVFileInfo::probe(QUrl::fromLocalFile(path));
        if (Interruption::signal() != 0) return false;
        record = std::move(probe.record);
        // In text format, the warnings are part of the movie's description.
        run.presenter().writesToStandardError = asJson || !record;
        for (const Verdict& verdict : verdicts::inOrderOfShowing(std::move(probe.verdicts)))
            verdicts::show(verdict);
    } else {
        messages.push_back({{}, ApplicationInfo::name(), reason});
        output::error(reason);
    }
    std::optional<qsizetype> bestTrack;
    if (record) {
        const QStringList languages = audiopreselection::languages(languages::preferredLanguages3Letter());
        bestTrack = audiopreselection::bestTrack(*record, languages);
    }
    if (asJson) {
        output::json(json::probed(path, record, bestTrack, messages));
    } else if (record) {
        printText(*record, bestTrack, messages);
    }
    return record.has_value();
}

}  // namespace

int runProbe(const ProbeOptions& options, const CommandLine& line) {
    const Interruption interruption;
    Run run(line.overrides, Run::DesktopUse::None);
    int status = exitstatus::kSuccess;
    for (const QString& movie : options.movies) {
        if (!probeMovie(absolutePath(movie), options.json, run)) status = exitstatus::kFailure;
        if (const int signal = Interruption::signal()) return exitstatus::afterSignal(signal);
    }
    return status;
}
