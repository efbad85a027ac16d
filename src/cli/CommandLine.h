#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <variant>

/// What the user asked for, read from the arguments and checked as far as that goes without touching a file.

struct ProbeOptions {
    bool json = false;
    QStringList movies;
};

struct ConvertOptions {
    bool json = false;
    bool quiet = false;
    QString folder;            ///< --to; empty: next to the source.
    QString output;            ///< --output; empty: by the source's name.
    std::optional<int> audio;  ///< --audio
    QStringList paths;
};

struct WatchOptions {
    bool json = false;
    QString destination;  ///< --to; empty: next to the source.
    QString folder;
};

struct SettingsOptions {
    enum class Action { List, Get, Set, Unset, Path };
    Action action = Action::List;
    bool json = false;
    QString key;
    QString value;
};

struct CommandLine {
    /// monostate: there is nothing to do but to end with exitStatus (help, version, wrong usage).
    std::variant<std::monostate, ProbeOptions, ConvertOptions, WatchOptions, SettingsOptions> command;
    /// --set and --style, for this run alone.
    QMap<QString, QVariant> overrides;
    int exitStatus = 0;

    /// Prints help and version to standard output, a mistake to standard error.
    static CommandLine parse(int argc, char** argv);
};

/// One line on standard error and the hint at --help. Returns the exit status for it.
int wrongUsage(const QString& message, const QString& command);
/// A sentence that names the known keys nearest to `key`.
QString unknownKeyMessage(const QString& key);
