#include "cli/ArgumentParser.h"
#include "cli/manual/CommandDescription.h"
#include "cli/manual/Completions.h"
#include "cli/manual/ManualPage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <utility>

/// Writes the manual page and the completions of ravelin-cli into a folder; the build runs it.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("Usage: cli_manual FOLDER\n", stderr);
        return 2;
    }
    const ArgumentParser parser;
    const CommandDescription program = describe(parser);
    for (const auto& [name, text] : std::initializer_list<std::pair<QString, QString>>{
             {"ravelin-cli.1", manualPage(program)},
             {"ravelin-cli.bash", completions::bash(program)},
             {"_ravelin-cli", completions::zsh(program)},
             {"ravelin-cli.fish", completions::fish(program)}}) {
        QFile file(QDir(arguments.at(1)).filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.flush()) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(file.fileName()), qPrintable(file.errorString()));
            return 1;
        }
    }
    return 0;
}
