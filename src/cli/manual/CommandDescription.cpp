#include "cli/manual/CommandDescription.h"

#include "cli/ArgumentParser.h"

#include <algorithm>

namespace {

QString decoded(const std::string& text) {
    return QString::fromStdString(text);
}

OptionDescription describe(const CLI::Option& option) {
    OptionDescription description;
    for (const std::string& name : option.get_snames())
        description.names.append("-" + decoded(name));
    for (const std::string& name : option.get_lnames())
        description.names.append("--" + decoded(name));
    // Behind a colon are the checks.
    const bool takesNothing = option.get_items_expected_max() == 0;
    if (!takesNothing) description.value = decoded(option.get_type_name()).section(u':', 0, 0);
    if (description.names.isEmpty()) description.value = decoded(option.get_name());
    if (description.value == "STYLE") {
        for (const auto& [word, number] : ArgumentParser::styles())
            description.choices.append(decoded(word));
    }
    description.help = decoded(option.get_description());
    description.isRequired = option.get_required();
    // Paths, and options whose values are all kept.
    description.isRepeatable =
        option.get_expected_max() > 1 || option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    return description;
}

CommandDescription describe(const CLI::App& app) {
    CommandDescription description{decoded(app.get_name()), decoded(app.get_description()), {}, {}, {}};
    for (const CLI::Option* option : app.get_options()) {
        auto& list = option->nonpositional() ? description.options : description.arguments;
        list.append(describe(*option));
    }
    for (const CLI::App* command : app.get_subcommands({}))
        description.commands.append(describe(*command));
    return description;
}

}  // namespace

CommandDescription describe(const ArgumentParser& parser) {
    return describe(parser.app);
}
