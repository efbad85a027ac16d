#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class ArgumentParser;

/// An option, or an argument by its position.
struct OptionDescription {
    QStringList names;  ///< "-h", "--help"; empty: an argument.
    QString value;      ///< Placeholder of what it takes, such as "FOLDER"; empty: nothing.
    QString help;
    QStringList choices;  ///< The words that are allowed; empty: any.
    bool isRequired = false;
    bool isRepeatable = false;
};

struct CommandDescription {
    QString name;
    QString help;
    QList<OptionDescription> options;
    QList<OptionDescription> arguments;
    QList<CommandDescription> commands;
};

/// Reads the whole command line, its commands with theirs, out of the parser, so that no page or completion
/// can say anything else than --help. The texts are in the language of the parser. Main thread only.
CommandDescription describe(const ArgumentParser& parser);
