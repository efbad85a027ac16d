#include "cli/CommandLine.h"

#include "cli/ExitStatus.h"
#include "cli/Output.h"
#include "settings/Settings.h"
#include "settings/SettingsTable.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"
#include "tool/cage/Cage.h"

#include <CLI/CLI.hpp>

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

/// The raw values that CLI11 fills.
struct Raw {
    std::vector<std::string> paths;
    std::vector<std::string> settings;
    std::string folder, output, style, watched, key, value;
    int audio = 0;
    bool json = false, quiet = false, keepDamaged = false;
    int stallLimit = 0;  // In seconds; 0: none.
};

const std::map<std::string, qint64>& styles() {
    static const auto styles = [] {
        std::map<std::string, qint64> words;
        for (const settings::Choice& choice : settings::ConversionPreset.choices.list)
            words.emplace(choice.word.data(), choice.number);
        return words;
    }();
    return styles;
}

/// The error in the text of a position; empty: none.
std::string position(const std::string& text) {
    bool fits = false;
    const int number = decoded(text).toInt(&fits);
    return fits && number >= 0
               ? std::string()
               : Texts::tr("'%1' is not a position from 0 on").arg(decoded(text)).toStdString();
}

std::string help(const QString& text) {
    return text.toStdString();
}

void addJson(CLI::App* command, Raw& raw) {
    command->add_flag("--json", raw.json, help(Texts::tr("One JSON object a line on standard output")));
}

void addSet(CLI::App* command, Raw& raw) {
    command
        ->add_option("--set", raw.settings,
                     help(Texts::tr("Use VALUE for the setting KEY in this run alone")))
        ->type_name("KEY=VALUE")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

CLI::App* addProbe(CLI::App& app, Raw& raw) {
    CLI::App* probe = app.add_subcommand(
        "probe", help(Texts::tr("Tell what is in movies and whether they can be converted")));
    addJson(probe, raw);
    addSet(probe, raw);
    probe->add_option("MOVIE", raw.paths, help(Texts::tr("Movies")))->required()->type_name("");
    return probe;
}

CLI::Option* addTo(CLI::App* command, Raw& raw) {
    return command
        ->add_option("--to", raw.folder,
                     help(Texts::tr("Put the outputs into FOLDER instead of next to their sources")))
        ->type_name("FOLDER");
}

/// The options that decide what becomes of movies, and the movies.
void addPlanning(CLI::App* command, Raw& raw) {
    command
        ->add_option("--audio", raw.audio, help(Texts::tr("Take the audio track with this position, from 0")))
        ->type_name("INDEX")
        ->check(position, "");
    command
        ->add_option("--style", raw.style,
                     help(Texts::tr("How audio is handled: compatible, fast or custom")))
        ->type_name("STYLE")
        ->check(CLI::IsMember(styles()));
    addSet(command, raw);
    command->add_option("PATH", raw.paths, help(Texts::tr("Movies, subtitle files, and folders of them")))
        ->required()
        ->type_name("");
}

CLI::App* addPlan(CLI::App& app, Raw& raw) {
    CLI::App* plan = app.add_subcommand(
        "plan", help(Texts::tr("Tell what would become of each stream, without converting anything")));
    addJson(plan, raw);
    addPlanning(plan, raw);
    return plan;
}

void addStallLimit(CLI::App* command, Raw& raw) {
    command
        ->add_option("--stall-limit", raw.stallLimit,
                     help(Texts::tr("Let a conversion fail that makes no progress for so many seconds")))
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber);
}

CLI::App* addConvert(CLI::App& app, Raw& raw) {
    CLI::App* convert =
        app.add_subcommand("convert", help(Texts::tr("Put movies into MP4 without re-encoding the picture")));
    addJson(convert, raw);
    convert->add_flag("--quiet", raw.quiet, help(Texts::tr("Say nothing while all goes well")));
    auto* folder = addTo(convert, raw);
    convert
        ->add_option(
            "--output", raw.output,
            help(Texts::tr("Write the output of the single movie to FILE, also over an existing one")))
        ->type_name("FILE")
        ->excludes(folder);
    addPlanning(convert, raw);
    addStallLimit(convert, raw);
    convert->add_flag("--keep-damaged", raw.keepDamaged,
                      help(Texts::tr("Keep the output of a movie even if a part of the movie is lost")));
    return convert;
}

CLI::App* addWatch(CLI::App& app, Raw& raw) {
    CLI::App* watch =
        app.add_subcommand("watch", help(Texts::tr("Convert what arrives in a folder, until it is ended")));
    addJson(watch, raw);
    addTo(watch, raw);
    addStallLimit(watch, raw);
    addSet(watch, raw);
    watch->add_option("FOLDER", raw.watched, help(Texts::tr("The folder that is watched, with all below it")))
        ->required()
        ->type_name("");
    return watch;
}

CLI::App* addSettings(CLI::App& app, Raw& raw) {
    CLI::App* settings =
        app.add_subcommand("settings", help(Texts::tr("Show and change the stored settings")));
    addJson(settings, raw);
    settings->require_subcommand(1);
    settings->fallthrough();
    const auto add = [&](const char* name, const QString& description, bool key, bool value) {
        CLI::App* action = settings->add_subcommand(name, help(description));
        if (key)
            action->add_option("KEY", raw.key, help(Texts::tr("The setting's name")))
                ->required()
                ->type_name("");
        if (value)
            action->add_option("VALUE", raw.value, help(Texts::tr("Its new value")))
                ->required()
                ->type_name("");
        action->fallthrough();
    };
    add("list", Texts::tr("Every setting with its value"), false, false);
    add("get", Texts::tr("The value of one setting"), true, false);
    add("set", Texts::tr("Store a value"), true, true);
    add("unset", Texts::tr("Forget the stored value: the default is back"), true, false);
    add("path", Texts::tr("The file in which the settings are stored"), false, false);
    return settings;
}

/// The words of the help that are not ours, for this command and those below it.
void translateHelp(CLI::App& app) {
    app.set_help_flag("-h,--help", help(Texts::tr("Print this help message and exit")));
    for (const auto& [label, text] :
         std::initializer_list<std::pair<const char*, QString>>{{"Usage", Texts::tr("Usage")},
                                                                {"OPTIONS", Texts::tr("OPTIONS")},
                                                                {"SUBCOMMAND", Texts::tr("SUBCOMMAND")},
                                                                {"Positionals", Texts::tr("Positionals")},
                                                                {"Excludes", Texts::tr("Excludes")},
                                                                {"REQUIRED", Texts::tr("REQUIRED")}})
        app.get_formatter()->label(label, help(text));
    for (CLI::Option* option : app.get_options()) {
        if (option->nonpositional()) option->group(help(Texts::tr("Options")));
    }
    for (CLI::App* command : app.get_subcommands({})) {
        command->group(help(Texts::tr("Subcommands")));
        translateHelp(*command);
    }
}

SettingsOptions settingsOptions(const CLI::App& settings, const Raw& raw) {
    using enum SettingsOptions::Action;
    static const std::map<std::string, SettingsOptions::Action> kActions = {
        {"list", List}, {"get", Get}, {"set", Set}, {"unset", Unset}, {"path", Path}};
    return {kActions.at(settings.get_subcommands().front()->get_name()), raw.json, decoded(raw.key),
            decoded(raw.value)};
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

QString versionText() {
    const QString version = makeString("%@ %@", ApplicationInfo::name(), ApplicationInfo::version());
    return version + u'\n' + Texts::tr("Cage: %1").arg(cage::description());
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
    Raw raw;
    CLI::App app(help(Texts::tr("Puts MKV and other movies into MP4 without re-encoding the picture.")),
                 "ravelin-cli");
    app.set_version_flag(
        "--version", [] { return versionText().toStdString(); },
        help(Texts::tr("Display program version information and exit")));
    app.require_subcommand(1);
    const CLI::App* probe = addProbe(app, raw);
    const CLI::App* plan = addPlan(app, raw);
    const CLI::App* convert = addConvert(app, raw);
    const CLI::App* watch = addWatch(app, raw);
    const CLI::App* settings = addSettings(app, raw);
    translateHelp(app);

    const auto commandName = [&] {
        for (const CLI::App* candidate : {probe, plan, convert, watch, settings}) {
            if (candidate->parsed()) return decoded(candidate->get_name());
        }
        return QString();
    };
    CommandLine line;
    const QString unknown = unknownCommand(app, decoded(std::vector<std::string>(argv + 1, argv + argc)));
    if (!unknown.isEmpty()) return mistake(Texts::tr("there is no command '%1'").arg(unknown), {});
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success);  // Help or version.
        return line;
    } catch (const CLI::ParseError& error) {
        return mistake(firstLine(error.what()), commandName());
    }

    for (const std::string& assignment : raw.settings) {
        const QString message = parseOverride(decoded(assignment), line.overrides);
        if (!message.isEmpty()) return mistake(message, commandName());
    }
    if (raw.stallLimit > 0) line.overrides.insert(settings::StallLimit.key, qint64{raw.stallLimit});
    if (!raw.style.empty()) line.overrides.insert(settings::ConversionPreset.key, styles().at(raw.style));

    const auto audio = [&](const CLI::App* chosen) {
        return chosen->get_option("--audio")->count() > 0 ? std::optional(raw.audio) : std::nullopt;
    };
    if (probe->parsed()) {
        line.command = ProbeOptions{raw.json, decoded(raw.paths)};
    } else if (plan->parsed()) {
        line.command = PlanOptions{raw.json, audio(plan), decoded(raw.paths)};
    } else if (convert->parsed()) {
        line.command =
            ConvertOptions{raw.json,       raw.quiet,       decoded(raw.folder), decoded(raw.output),
                           audio(convert), raw.keepDamaged, decoded(raw.paths)};
    } else if (watch->parsed()) {
        line.command = WatchOptions{raw.json, decoded(raw.folder), decoded(raw.watched)};
    } else {
        line.command = settingsOptions(*settings, raw);
    }
    return line;
}
