#include "cli/Commands.h"
#include "support/base/Translations.h"
#include "support/base/Utf8Locale.h"
#include "support/reports/CrashReport.h"

#include <QCoreApplication>

namespace {

struct RunCommand {
    const CommandLine& line;

    int operator()(std::monostate) const { return line.exitStatus; }
    int operator()(const ProbeOptions& options) const { return runProbe(options, line); }
    int operator()(const PlanOptions& options) const { return runPlan(options, line); }
    int operator()(const ConvertOptions& options) const { return runConvert(options, line); }
    int operator()(const WatchOptions& options) const { return runWatch(options, line); }
    int operator()(const SettingsOptions& options) const { return runSettings(options); }
    int operator()(const DoctorOptions& options) const { return runDoctor(options); }
};

}  // namespace

int main(int argc, char** argv) {
    makeSureOfUtf8();
    const QCoreApplication application(argc, argv);
    installTranslations();
    const CommandLine line = CommandLine::parse(argc, argv);
    // What only prints a text starts faster without.
    if (!std::holds_alternative<std::monostate>(line.command)) crashreport::install();
    return std::visit(RunCommand{line}, line.command);
}
