#include "cli/Commands.h"

#include <QCoreApplication>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>

namespace {

/// Names of files are UTF-8. Where the locale says otherwise (a cron job, a bare ssh), the languages that the
/// user prefers stay and only the encoding changes.
void makeSureOfUtf8() {
    std::setlocale(LC_ALL, "");
    if (std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0) return;
    if (const char* all = std::getenv("LC_ALL"); all && *all) ::setenv("LANG", all, 1);
    ::unsetenv("LC_ALL");
    ::setenv("LC_CTYPE", "C.UTF-8", 1);
    std::setlocale(LC_ALL, "");
}

struct RunCommand {
    const CommandLine& line;

    int operator()(std::monostate) const { return line.exitStatus; }
    int operator()(const ProbeOptions& options) const { return runProbe(options, line); }
    int operator()(const ConvertOptions& options) const { return runConvert(options, line); }
    int operator()(const SettingsOptions& options) const { return runSettings(options); }
};

}  // namespace

int main(int argc, char** argv) {
    makeSureOfUtf8();
    const QCoreApplication application(argc, argv);
    const CommandLine line = CommandLine::parse(argc, argv);
    return std::visit(RunCommand{line}, line.command);
}
