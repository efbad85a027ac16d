#include "cli/ArgumentParser.h"

#include "settings/Settings.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"
#include "tool/cage/Cage.h"

namespace {

using Values = ArgumentParser::Values;

/// The error in the text of a position; empty: none.
std::string position(const std::string& text) {
    bool fits = false;
    const int number = QString::fromStdString(text).toInt(&fits);
    return fits && number >= 0 ? std::string()
                               : Texts::tr("'%1' is not a position from 0 on")
                                     .arg(QString::fromStdString(text))
                                     .toStdString();
}

std::string help(const QString& text) {
    return text.toStdString();
}

void addJson(CLI::App* command, Values& values) {
    command->add_flag("--json", values.json, help(Texts::tr("One JSON object a line on standard output")));
}

void addSet(CLI::App* command, Values& values) {
    command
        ->add_option("--set", values.settings,
                     help(Texts::tr("Use VALUE for the setting KEY in this run alone")))
        ->type_name("KEY=VALUE")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

CLI::App* addProbe(CLI::App& app, Values& values) {
    CLI::App* probe = app.add_subcommand(
        "probe", help(Texts::tr("Tell what is in movies and whether they can be converted")));
    addJson(probe, values);
    addSet(probe, values);
    probe->add_option("MOVIE", values.paths, help(Texts::tr("Movies")))->required()->type_name("");
    return probe;
}

CLI::Option* addTo(CLI::App* command, Values& values) {
    return command
        ->add_option("--to", values.folder,
                     help(Texts::tr("Put the outputs into FOLDER instead of next to their sources")))
        ->type_name("FOLDER");
}

/// The options that decide what becomes of movies, and the movies.
void addPlanning(CLI::App* command, Values& values) {
    command
        ->add_option("--audio", values.audio,
                     help(Texts::tr("Take the audio track with this position, from 0")))
        ->type_name("INDEX")
        ->check(position, "");
    command
        ->add_option("--style", values.style,
                     help(Texts::tr("How audio is handled: compatible, fast or custom")))
        ->type_name("STYLE")
        ->check(CLI::IsMember(ArgumentParser::styles()));
    addSet(command, values);
    command->add_option("PATH", values.paths, help(Texts::tr("Movies, subtitle files, and folders of them")))
        ->required()
        ->type_name("");
}

CLI::App* addPlan(CLI::App& app, Values& values) {
    CLI::App* plan = app.add_subcommand(
        "plan", help(Texts::tr("Tell what would become of each stream, without converting anything")));
    addJson(plan, values);
    addPlanning(plan, values);
    return plan;
}

void addStallLimit(CLI::App* command, Values& values) {
    command
        ->add_option("--stall-limit", values.stallLimit,
                     help(Texts::tr("Let a conversion fail that makes no progress for so many seconds")))
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber);
}

CLI::App* addConvert(CLI::App& app, Values& values) {
    CLI::App* convert =
        app.add_subcommand("convert", help(Texts::tr("Put movies into MP4 without re-encoding the picture")));
    addJson(convert, values);
    convert->add_flag("--quiet", values.quiet, help(Texts::tr("Say nothing while all goes well")));
    auto* folder = addTo(convert, values);
    convert
        ->add_option(
            "--output", values.output,
            help(Texts::tr("Write the output of the single movie to FILE, also over an existing one")))
        ->type_name("FILE")
        ->excludes(folder);
    addPlanning(convert, values);
    addStallLimit(convert, values);
    convert->add_flag("--keep-damaged", values.keepDamaged,
                      help(Texts::tr("Keep the output of a movie even if a part of the movie is lost")));
    convert->add_flag(
        "--skip-existing", values.skipExisting,
        help(Texts::tr(
            "Leave movies whose output is there, compared and whole, and those that are being converted")));
    return convert;
}

CLI::App* addWatch(CLI::App& app, Values& values) {
    CLI::App* watch =
        app.add_subcommand("watch", help(Texts::tr("Convert what arrives in a folder, until it is ended")));
    addJson(watch, values);
    addTo(watch, values);
    addStallLimit(watch, values);
    addSet(watch, values);
    watch
        ->add_option("FOLDER", values.watched,
                     help(Texts::tr("The folder that is watched, with all below it")))
        ->required()
        ->type_name("");
    return watch;
}

CLI::App* addSettings(CLI::App& app, Values& values) {
    CLI::App* settings =
        app.add_subcommand("settings", help(Texts::tr("Show and change the stored settings")));
    addJson(settings, values);
    settings->require_subcommand(1);
    settings->fallthrough();
    const auto add = [&](const char* name, const QString& description, bool key, bool value) {
        CLI::App* action = settings->add_subcommand(name, help(description));
        if (key)
            action->add_option("KEY", values.key, help(Texts::tr("The setting's name")))
                ->required()
                ->type_name("");
        if (value)
            action->add_option("VALUE", values.value, help(Texts::tr("Its new value")))
                ->required()
                ->type_name("");
        action->fallthrough();
        return action;
    };
    add("list", Texts::tr("Every setting with its value"), false, false)
        ->add_flag("--describe", values.describe,
                   help(Texts::tr("Tell what each setting means, and which values it can have")));
    add("get", Texts::tr("The value of one setting"), true, false);
    add("set", Texts::tr("Store a value"), true, true);
    add("unset", Texts::tr("Forget the stored value: the default is back"), true, false);
    add("path", Texts::tr("The file in which the settings are stored"), false, false);
    return settings;
}

CLI::App* addDoctor(CLI::App& app, Values& values) {
    CLI::App* doctor = app.add_subcommand(
        "doctor", help(Texts::tr("Tell what Ravelin finds on this machine, on a page for support")));
    addJson(doctor, values);
    doctor->add_option("FOLDER", values.paths, help(Texts::tr("Also look at these folders")))->type_name("");
    return doctor;
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

}  // namespace

const std::map<std::string, qint64>& ArgumentParser::styles() {
    static const auto styles = [] {
        std::map<std::string, qint64> words;
        for (const settings::Choice& choice : settings::ConversionPreset.choices.list)
            words.emplace(choice.word.data(), choice.number);
        return words;
    }();
    return styles;
}

ArgumentParser::ArgumentParser()
    : app(help(Texts::tr("Puts MKV and other movies into MP4 without re-encoding the picture.")),
          "ravelin-cli") {
    app.set_version_flag(
        "--version", [] { return version().toStdString(); },
        help(Texts::tr("Display program version information and exit")));
    app.require_subcommand(1);
    probe = addProbe(app, values);
    plan = addPlan(app, values);
    convert = addConvert(app, values);
    watch = addWatch(app, values);
    settings = addSettings(app, values);
    doctor = addDoctor(app, values);
}

QString ArgumentParser::version() {
    const QString version = makeString("%@ %@", ApplicationInfo::name(), ApplicationInfo::version());
    return version + u'\n' + Texts::tr("Cage: %1").arg(cage::description());
}

void ArgumentParser::translateHelp() {
    ::translateHelp(app);
}
