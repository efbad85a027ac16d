#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <variant>

/// The user's request, parsed from the arguments and checked as far as possible without accessing a file.
/// Main thread only.

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
    bool keepDamaged = false;
    bool skipExisting = false;
    QStringList paths;
};

struct PlanOptions {
    bool json = false;
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
    bool describe = false;  ///< --describe, for List.
    QString key;
    QString value;
};

struct DoctorOptions {
    bool json = false;
    QStringList folders;  ///< Where movies are or outputs go.
};

struct CommandLine {
    /// monostate: nothing to do but to exit with exitStatus (help, version, wrong usage).
    std::variant<std::monostate, ProbeOptions, PlanOptions, ConvertOptions, WatchOptions, SettingsOptions,
                 DoctorOptions>
        command;
    /// Values of --set and --style, for this run only.
    QMap<QString, QVariant> overrides;
    int exitStatus = 0;

    /// Prints help and version to standard output, errors to standard error.
    static CommandLine parse(int argc, char** argv);
};

/// Writes the message and a hint to --help to standard error. Returns the exit status for wrong usage.
int wrongUsage(const QString& message, const QString& command);
/// A sentence with the known keys that are most similar to `key`.
QString unknownKeyMessage(const QString& key);
