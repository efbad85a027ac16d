#include "cli/CommandLine.h"

#include "cli/ArgumentParser.h"
#include "cli/ExitStatus.h"
#include "cli/Output.h"
#include "settings/Settings.h"
#include "settings/SettingsTable.h"
#include "support/base/Texts.h"

namespace {

QString decoded(const std::string& text) {
    return QString::fromStdString(text);
}

QStringList decoded(const std::vector<std::string>& texts) {
    QStringList result;
    for (const std::string& text : texts)
        result.append(decoded(text));
    return result;
}

SettingsOptions settingsOptions(const CLI::App& settings, const ArgumentParser::Values& raw) {
    using enum SettingsOptions::Action;
    static const std::map<std::string, SettingsOptions::Action> kActions = {
        {"list", List}, {"get", Get}, {"set", Set}, {"unset", Unset}, {"path", Path}};
    return {kActions.at(settings.get_subcommands().front()->get_name()), raw.json, raw.describe,
            decoded(raw.key), decoded(raw.value)};
}

/// Parses a whole number as an integer and any other value as text.
QVariant overrideValue(const QString& text) {
    const auto number = settings::valueFromText(settings::Type::Integer, text);
    return number ? *number : QVariant(text);
}

/// Parses a "--set KEY=VALUE" into `overrides`. Returns an error message; empty: success.
QString parseOverride(const QString& assignment, QMap<QString, QVariant>& overrides) {
    const qsizetype equals = assignment.indexOf(u'=');
    if (equals < 0) return Texts::tr("--set needs KEY=VALUE, not '%1'").arg(assignment);
    const QString key = assignment.left(equals);
    if (!settings::find(key)) return unknownKeyMessage(key);
    overrides.insert(key, overrideValue(assignment.mid(equals + 1)));
    return {};
}

CommandLine mistake(const QString& message, const QString& command) {
    CommandLine line;
    line.exitStatus = wrongUsage(message, command);
    return line;
}

/// The first word in the place of a command that is none; empty: there is no such word.
QString unknownCommand(const CLI::App& app, QStringList words) {
    words.removeIf([](const QString& word) { return word.startsWith(u'-'); });
    const auto commands = app.get_subcommands({});
    if (words.isEmpty() || commands.empty()) return {};
    for (const CLI::App* command : commands) {
        if (words.first() == decoded(command->get_name())) return unknownCommand(*command, words.mid(1));
    }
    return words.first();
}

/// The error message of CLI11, in one line.
QString firstLine(const char* text) {
    return QString::fromUtf8(text).section(u'\n', 0, 0);
}

}  // namespace

int wrongUsage(const QString& message, const QString& command) {
    output::error("ravelin-cli: " + message);
    const QString help =
        command.isEmpty() ? QString("ravelin-cli --help") : "ravelin-cli " + command + " --help";
    output::error(Texts::tr("Try '%1'.").arg(help));
    return exitstatus::kUsage;
}

QString unknownKeyMessage(const QString& key) {
    return Texts::tr("there is no setting '%1'; the nearest are %2")
        .arg(key, settings::nearestKeys(key).join(", "));
}

CommandLine CommandLine::parse(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words == std::vector<std::string>{"--version"}) {
        // Scripts ask often; to make the parser takes as long as all of the rest.
        output::line(ArgumentParser::version());
        return {};
    }
    ArgumentParser parser;
    const ArgumentParser::Values& raw = parser.values;
    const auto commandName = [&] {
        const auto chosen = parser.app.get_subcommands();
        return chosen.empty() ? QString() : decoded(chosen.front()->get_name());
    };
    CommandLine line;
    const QString unknown = unknownCommand(parser.app, decoded(words));
    if (!unknown.isEmpty()) return mistake(Texts::tr("there is no command '%1'").arg(unknown), {});
    try {
        parser.app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        parser.translateHelp();
        parser.app.exit(success);  // Help or version.
        return line;
    } catch (const CLI::ParseError& error) {
        return mistake(firstLine(error.what()), commandName());
    }

    for (const std::string& assignment : raw.settings) {
        const QString message = parseOverride(decoded(assignment), line.overrides);
        if (!message.isEmpty()) return mistake(message, commandName());
    }
    if (raw.stallLimit > 0) line.overrides.insert(settings::StallLimit.key, qint64{raw.stallLimit});
    if (!raw.style.empty())
        line.overrides.insert(settings::ConversionPreset.key, ArgumentParser::styles().at(raw.style));

    const auto audio = [&](const CLI::App* chosen) {
        return chosen->get_option("--audio")->count() > 0 ? std::optional(raw.audio) : std::nullopt;
    };
    if (parser.probe->parsed()) {
        line.command = ProbeOptions{raw.json, decoded(raw.paths)};
    } else if (parser.plan->parsed()) {
        line.command = PlanOptions{raw.json, audio(parser.plan), decoded(raw.paths)};
    } else if (parser.convert->parsed()) {
        line.command = ConvertOptions{raw.json,
                                      raw.quiet,
                                      decoded(raw.folder),
                                      decoded(raw.output),
                                      audio(parser.convert),
                                      raw.keepDamaged,
                                      raw.skipExisting,
                                      decoded(raw.paths)};
    } else if (parser.watch->parsed()) {
        line.command = WatchOptions{raw.json, decoded(raw.folder), decoded(raw.watched)};
    } else if (parser.doctor->parsed()) {
        line.command = DoctorOptions{raw.json, decoded(raw.paths)};
    } else {
        line.command = settingsOptions(*parser.settings, raw);
    }
    return line;
}
