#include "cli/manual/ManualPage.h"

#include "cli/SettingDescription.h"
#include "cli/manual/CommandDescription.h"
#include "support/base/ApplicationInfo.h"

#include <initializer_list>
#include <utility>

namespace {

/// Text as troff prints it.
QString escaped(QString text) {
    text.replace(u'\\', "\\e").replace(u'-', "\\-");
    // At the start of a line they would begin a request.
    if (text.startsWith(u'.') || text.startsWith(u'\'')) text.prepend("\\&");
    return text;
}

QString bold(const QString& text) {
    return "\\fB" + escaped(text) + "\\fR";
}

QString italic(const QString& text) {
    return "\\fI" + escaped(text) + "\\fR";
}

QString section(const QString& title) {
    return ".SH " + title + '\n';
}

QString item(const QString& tag, const QString& text) {
    return ".TP\n" + tag + '\n' + escaped(text) + '\n';
}

QString sentence(const QString& text) {
    return text.endsWith(u'.') ? text : text + u'.';
}

QString tagOf(const OptionDescription& option) {
    QStringList names;
    for (const QString& name : option.names)
        names.append(bold(name));
    if (names.isEmpty()) names.append(italic(option.value));
    const QString value =
        option.names.isEmpty() || option.value.isEmpty() ? QString() : ' ' + italic(option.value);
    return names.join(", ") + value;
}

QString synopsisOf(const QString& program, const CommandDescription& command) {
    QString line = ".B " + escaped(program) + '\n';
    for (const OptionDescription& option : command.options) {
        if (option.names.contains("--help")) continue;
        line += '[' + bold(option.names.last()) +
                (option.value.isEmpty() ? "" : "\\ " + italic(option.value)) + ']' +
                (option.isRepeatable ? "...\n" : "\n");
    }
    for (const OptionDescription& argument : command.arguments) {
        const QString value = italic(argument.value) + (argument.isRepeatable ? "..." : "");
        line += argument.isRequired ? value + '\n' : '[' + value + "]\n";
    }
    return line + ".br\n";
}

QString synopses(const QString& program, const CommandDescription& command) {
    if (command.commands.isEmpty()) return synopsisOf(program, command);
    QString lines;
    for (const CommandDescription& below : command.commands)
        lines += synopses(program + ' ' + below.name, below);
    return lines;
}

QString optionItems(const CommandDescription& command) {
    QString items;
    for (const OptionDescription& argument : command.arguments)
        items += item(tagOf(argument), sentence(argument.help));
    for (const OptionDescription& option : command.options) {
        if (!option.names.contains("--help")) items += item(tagOf(option), sentence(option.help));
    }
    return items;
}

QString commandSections(const CommandDescription& command, const QString& name) {
    QString text =
        ".SS " + escaped(name) + '\n' + escaped(sentence(command.help)) + '\n' + optionItems(command);
    for (const CommandDescription& below : command.commands)
        text += commandSections(below, name + ' ' + below.name);
    return text;
}

QString exitStatus() {
    QString items;
    for (const auto& [status, meaning] : std::initializer_list<std::pair<const char*, const char*>>{
             {"0", "Every movie succeeded."},
             {"1", "At least one movie was refused or failed, or a setting could not be saved."},
             {"2", "Wrong usage; nothing was started."},
             {"3", "Every movie finished, but at least one is not whole."},
             {"130, 143", "Ended by Ctrl-C or SIGTERM. Unfinished outputs were removed."}})
        items += item(status, meaning);
    return items;
}

QString environment() {
    QString items;
    for (const auto& [name, meaning] : std::initializer_list<std::pair<const char*, const char*>>{
             {"RAVELIN_RESOURCES", "The folder with the conversion tool, ffmpeg, and the documents."},
             {"XDG_CONFIG_HOME", "Below it is the settings file; ~/.config if unset."},
             {"XDG_DATA_HOME", "Below it is the application's own data; ~/.local/share if unset."}})
        items += item(bold(name), meaning);
    return items;
}

QString settingItems() {
    QString items;
    for (const settings::Row* setting : settings::all()) {
        const QString standard = settings::textFromValue(settingdescription::unsetValue(*setting));
        items += item(bold(setting->key),
                      QString("%1. Value: %2; default: %3.")
                          .arg(QString(setting->meaning), settingdescription::allowedText(*setting),
                               standard.isEmpty() ? "empty" : standard));
    }
    return items;
}

}  // namespace

QString manualPage(const CommandDescription& program) {
    QString page = QString(".TH RAVELIN\\-CLI 1 \"\" \"%1 %2\" \"User Commands\"\n")
                       .arg(ApplicationInfo::name(), ApplicationInfo::version());
    page += ".ad l\n" + section("NAME") +
            "ravelin\\-cli \\- put MKV and other movies into MP4 without re\\-encoding the picture\n";
    page += section("SYNOPSIS") + synopses(program.name, program);
    page +=
        section("DESCRIPTION") + escaped(program.help) + "\n.PP\n" +
        "Each movie is probed and planned before it is converted, and its output is compared with its source "
        "before it counts as finished. An existing file is never overwritten unless\n.B \\-\\-output\nnames "
        "it. Nothing waits for an answer.\n";
    page += section("COMMANDS");
    for (const CommandDescription& command : program.commands)
        page += commandSections(command, command.name);
    page += section("OPTIONS") + optionItems(program) +
            item(bold("-h") + ", " + bold("--help"), "Print help and exit; after a command, its help.");
    page += section("EXIT STATUS") + exitStatus();
    page += section("ENVIRONMENT") + environment();
    page +=
        section("FILES") + item(italic("~/.config/" + ApplicationInfo::bundleIdentifier() + "/settings.json"),
                                "The settings, which the window uses, too.");
    page +=
        section("SETTINGS") + "For\n.BR \\-\\-set ,\nand for the command\n.BR settings .\n" + settingItems();
    return page + section("SEE ALSO") + ".BR ravelin (1)\n";
}
