#include "app/watching/MovieArrivals.h"
#include "cli/Commands.h"
#include "cli/ConvertCommand.h"
#include "cli/ExitStatus.h"
#include "cli/Output.h"
#include "cli/Run.h"
#include "support/base/Texts.h"
#include "support/processes/Interruption.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTimer>

namespace {

QString whyNotWatchable(const QString& folder) {
    const QFileInfo info(folder);
    if (!info.exists()) return Texts::tr("there is no folder '%1'").arg(output::shown(folder));
    if (!info.isDir()) return Texts::tr("'%1' is not a folder").arg(output::shown(folder));
    return {};
}

}  // namespace

int runWatch(const WatchOptions& options, const CommandLine& line) {
    const QString folder = absolutePath(options.folder);
    if (const QString error = whyNotWatchable(folder); !error.isEmpty()) return wrongUsage(error, "watch");

    const Interruption interruption;
    auto overrides = line.overrides;
    // Movies are converted in the order of arrival.
    if (!overrides.contains("InsertJobsAtBottom")) overrides.insert("InsertJobsAtBottom", 1);
    Run run(overrides, Run::DesktopUse::Real);
    ConvertOptions convert;
    convert.json = options.json;
    convert.folder = options.destination;
    ConvertCommand command(convert, run.presenter());
    command.setEndless(true);

    MovieArrivals watch;
    int status = exitstatus::kSuccess;
    const auto end = [&](const QString& reason) {
        output::error(reason);
        status = exitstatus::kFailure;
        command.setEndless(false);  // Finish the running conversions.
    };
    QObject::connect(&watch, &MovieArrivals::arrived, &command, &ConvertCommand::add);
    QObject::connect(&watch, &MovieArrivals::problem, &command, &output::error);
    QObject::connect(&watch, &MovieArrivals::ended, &command, end);
    QObject::connect(&interruption, &Interruption::interrupted, &command, [&] {
        watch.stop();
        command.interrupt();
    });
    QTimer::singleShot(0, &command, [&] {
        if (const QString problem = watch.start(folder); !problem.isEmpty()) {
            end(problem);
        } else if (!options.json) {
            output::line(Texts::tr("Watching %1").arg(output::shown(folder)));
        }
    });
    QCoreApplication::exec();
    if (const int signal = Interruption::signal()) return exitstatus::afterSignal(signal);
    return status;
}
