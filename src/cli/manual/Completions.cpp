#include "cli/manual/Completions.h"

#include "cli/manual/CommandDescription.h"
#include "settings/SettingsTable.h"

#include <QRegularExpression>

namespace {

/// What a shell offers for a value.
enum class Offer { Nothing, Files, Folders, Keys, Assignments, Choices };

Offer offerFor(const OptionDescription& option) {
    if (!option.choices.isEmpty()) return Offer::Choices;
    if (option.value == "KEY=VALUE") return Offer::Assignments;
    if (option.value == "KEY") return Offer::Keys;
    if (option.value == "FOLDER") return Offer::Folders;
    const bool isFile = option.value == "FILE" || option.value == "MOVIE" || option.value == "PATH";
    return isFile ? Offer::Files : Offer::Nothing;
}

QStringList keys() {
    QStringList names;
    for (const settings::Row* setting : settings::all())
        names.append(setting->key);
    return names;
}

QStringList assignments() {
    return keys().replaceInStrings(QRegularExpression("$"), "=");
}

/// In single quotes, which bash and zsh read as it stands.
QString quoted(QString text) {
    return '\'' + text.replace(u'\'', "'\\''") + '\'';
}

QStringList namesOf(const QList<CommandDescription>& commands) {
    QStringList names;
    for (const CommandDescription& command : commands)
        names.append(command.name);
    return names;
}

/// Calls `action` with each command below `program` and the words that choose it.
template <typename Action>
void forEachCommand(const CommandDescription& program, const QStringList& words, const Action& action) {
    for (const CommandDescription& command : program.commands) {
        const QStringList path = words + QStringList(command.name);
        action(command, path);
        forEachCommand(command, path, action);
    }
}

// bash

QString bashOffer(Offer offer, const OptionDescription& option) {
    switch (offer) {
        case Offer::Nothing:
            break;
        case Offer::Files:
            return "kind=files";
        case Offer::Folders:
            return "kind=folders";
        case Offer::Keys:
            return "kind=words words=$keys";
        case Offer::Assignments:
            return "kind=assignments words=$keys";
        case Offer::Choices:
            return "kind=words words=" + quoted(option.choices.join(u' '));
    }
    return "kind=nothing";
}

/// The cases of the three questions that the script asks: what the option before the word takes, which
/// options the command has, and what it takes beside them.
struct BashCases {
    QString values, options, arguments;
};

void addBashCases(BashCases& cases, const CommandDescription& command, const QString& path) {
    QStringList names;
    for (const OptionDescription& option : command.options) {
        names += option.names;
        for (const QString& name : option.names) {
            if (!option.value.isEmpty())
                cases.values += QString("        %1) %2 ;;\n")
                                    .arg(quoted(path + ' ' + name), bashOffer(offerFor(option), option));
        }
    }
    cases.options +=
        QString("        %1) kind=words words=%2 ;;\n").arg(quoted(path), quoted(names.join(u' ')));
    if (!command.commands.isEmpty()) {
        cases.arguments += QString("        %1) kind=words words=%2 ;;\n")
                               .arg(quoted(path), quoted(namesOf(command.commands).join(u' ')));
    } else if (!command.arguments.isEmpty()) {
        const OptionDescription& first = command.arguments.first();
        // A second argument of another kind has no offer.
        const QString only = first.isRepeatable ? QString() : "[[ $option == " + command.name + " ]] && ";
        cases.arguments +=
            QString("        %1) %2%3 ;;\n").arg(quoted(path), only, bashOffer(offerFor(first), first));
    }
}

// zsh

/// A text inside of a specification for _arguments.
QString zshText(QString text) {
    for (const QChar special : QStringView(u"\\[]:"))
        text.replace(special, QString(u'\\') + special);
    return text;
}

QString zshAction(const OptionDescription& option) {
    switch (offerFor(option)) {
        case Offer::Nothing:
            break;
        case Offer::Files:
            return "_files";
        case Offer::Folders:
            return "_files -/";
        case Offer::Keys:
            return '(' + keys().join(u' ') + ')';
        case Offer::Assignments:
            return "{compadd -S = - " + keys().join(u' ') + '}';
        case Offer::Choices:
            return '(' + option.choices.join(u' ') + ')';
    }
    return {};
}

QString zshFunctionName(const QStringList& path) {
    return "_ravelin-cli" + (path.isEmpty() ? QString() : '_' + path.join(u'_'));
}

QString zshFunction(const CommandDescription& command, const QStringList& path) {
    QStringList specifications;
    for (const OptionDescription& option : command.options) {
        for (const QString& name : option.names) {
            QString specification =
                (option.isRepeatable ? "*" : "") + name + '[' + zshText(option.help) + ']';
            if (!option.value.isEmpty())
                specification += ':' + zshText(option.value) + ':' + zshAction(option);
            specifications.append(quoted(specification));
        }
    }
    for (const OptionDescription& argument : command.arguments) {
        const QString place = argument.isRepeatable ? "*:" : ":";
        specifications.append(quoted(place + zshText(argument.value) + ':' + zshAction(argument)));
    }
    QString body;
    if (command.commands.isEmpty()) {
        body = "    _arguments " + specifications.join(" \\\n        ") + '\n';
    } else {
        specifications += {"'1:command:->command'", "'*::argument:->argument'"};
        QString commands, cases;
        for (const CommandDescription& below : command.commands) {
            commands += "                " +
                        quoted(QString(below.name).replace(u':', "\\:") + ':' + below.help) + '\n';
            cases += "                " + below.name + ") " +
                     zshFunctionName(path + QStringList(below.name)) + " ;;\n";
        }
        body = "    local curcontext=$curcontext state line\n    local -a commands\n    _arguments -C " +
               specifications.join(" \\\n        ") + " && return\n    case $state in\n        command)\n" +
               "            commands=(\n" + commands +
               "            )\n            _describe command commands ;;\n" +
               "        argument)\n            case $line[1] in\n" + cases +
               "            esac ;;\n    esac\n";
    }
    return zshFunctionName(path) + "() {\n" + body + "}\n\n";
}

// fish

QString fishQuoted(QString text) {
    return '\'' + text.replace(u'\\', "\\\\").replace(u'\'', "\\'") + '\'';
}

QString fishOffer(const OptionDescription& option) {
    switch (offerFor(option)) {
        case Offer::Nothing:
            break;
        case Offer::Files:
            return " -r -F";
        case Offer::Folders:
            return " -x -a '(__fish_complete_directories)'";
        case Offer::Keys:
            return " -x -a " + fishQuoted(keys().join(u' '));
        case Offer::Assignments:
            return " -x -a " + fishQuoted(assignments().join(u' '));
        case Offer::Choices:
            return " -x -a " + fishQuoted(option.choices.join(u' '));
    }
    return " -x";
}

QString fishLine(const QString& condition, const QString& rest, const QString& help) {
    return "complete -c ravelin-cli -n " + fishQuoted(condition) + rest + " -d " + fishQuoted(help) + '\n';
}

QString fishOptions(const CommandDescription& command, const QString& condition) {
    QString lines;
    for (const OptionDescription& option : command.options) {
        QString names;
        for (const QString& name : option.names)
            names += name.startsWith("--") ? " -l " + name.mid(2) : " -s " + name.mid(1);
        lines += fishLine(condition, names + (option.value.isEmpty() ? QString() : fishOffer(option)),
                          option.help);
    }
    for (const OptionDescription& argument : command.arguments) {
        QString offer = fishOffer(argument);
        // Of options only.
        offer.remove(" -r").remove(" -x");
        if (!offer.isEmpty()) lines += fishLine(condition, offer, argument.help);
    }
    return lines;
}

/// That the words of `path` were given, but none of a command below.
QString fishCondition(const QStringList& path, const CommandDescription& command) {
    QStringList conditions;
    for (const QString& word : path)
        conditions.append("__fish_seen_subcommand_from " + word);
    if (!command.commands.isEmpty())
        conditions.append("not __fish_seen_subcommand_from " + namesOf(command.commands).join(u' '));
    return conditions.join("; and ");
}

}  // namespace

namespace completions {

QString bash(const CommandDescription& program) {
    BashCases cases;
    addBashCases(cases, program, {});
    QStringList patterns;
    forEachCommand(program, {}, [&](const CommandDescription& command, const QStringList& words) {
        patterns.append(quoted((words.size() == 1 ? " " : "") + words.join(u' ')));
        addBashCases(cases, command, words.join(u' '));
    });
    return QString(R"(# Completion of ravelin-cli for bash.
_ravelin_cli() {
    local keys=%1
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} command= kind= words= i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        case "$command ${COMP_WORDS[i]}" in
            %2) command="${command:+$command }${COMP_WORDS[i]}" ;;
        esac
    done
    # "--to=FOLDER" and "KEY=VALUE" are three words here.
    if [[ $word == = ]]; then
        word=
        [[ $option == -* ]] || return
    elif [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
        [[ $option == -* ]] || return
    fi
    case "$command $option" in
%3    esac
    [[ $kind || $word != -* ]] || case "$command" in
%4    esac
    [[ $kind ]] || case "$command" in
%5    esac
    case "$kind" in
        files) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        folders) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
        assignments) compopt -o nospace; mapfile -t COMPREPLY < <(compgen -S = -W "$words" -- "$word") ;;
        words) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word") ;;
    esac
}
complete -F _ravelin_cli ravelin-cli
)")
        .arg(quoted(keys().join(u' ')), patterns.join(" | "), cases.values, cases.options, cases.arguments);
}

QString zsh(const CommandDescription& program) {
    QString functions = zshFunction(program, {});
    forEachCommand(program, {}, [&](const CommandDescription& command, const QStringList& path) {
        functions += zshFunction(command, path);
    });
    return "#compdef ravelin-cli\n\n" + functions + "_ravelin-cli \"$@\"\n";
}

QString fish(const CommandDescription& program) {
    QString lines = "# Completion of ravelin-cli for fish.\ncomplete -c ravelin-cli -f\n";
    const auto add = [&](const CommandDescription& command, const QStringList& path) {
        const QString condition = fishCondition(path, command);
        for (const CommandDescription& below : command.commands)
            lines += fishLine(condition, " -a " + below.name, below.help);
        lines += fishOptions(command, condition);
    };
    add(program, {});
    forEachCommand(program, {}, add);
    return lines;
}

}  // namespace completions
