#include "command_info.h"

#include "commands.h"
#include "words.h"

namespace pack {

namespace {

// One option in a synopsis: "-o FILE", "[--json]", "[--only TYPE...]".
std::string in_synopsis(const CLI::Option &option) {
    const bool is_needed = option.get_required() || option.get_option_text() == needed;
    std::string text;
    if (is_positional(option)) {
        text = option.get_name(true);
    } else {
        text = option.get_snames().empty() ? "--" + option.get_lnames().front()
                                           : "-" + option.get_snames().front();
        text += is_flag(option) ? "" : " " + option.get_type_name();
    }
    text += takes_many(option) ? "..." : "";
    return is_needed ? text : "[" + text + "]";
}

} // namespace

bool is_flag(const CLI::Option &option) {
    return option.get_items_expected_max() == 0;
}

bool is_positional(const CLI::Option &option) {
    return option.get_lnames().empty() && option.get_snames().empty();
}

bool takes_many(const CLI::Option &option) {
    return option.get_items_expected_max() > 1;
}

std::string synopsis(const CLI::App &command) {
    if (command.get_parent() == nullptr) {
        return "renewer-pack COMMAND [ARGUMENT...]";
    }
    std::string text = "renewer-pack " + command.get_name();
    for (const bool positional : {false, true}) {
        for (const CLI::Option *const option : command.get_options()) {
            if (is_positional(*option) == positional && option != command.get_help_ptr()) {
                text += " " + in_synopsis(*option);
            }
        }
    }
    return text;
}

std::vector<std::string> command_names(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *const sub : app.get_subcommands({})) {
        if (!sub->get_group().empty()) {
            names.push_back(sub->get_name());
        }
    }
    return names;
}

const CLI::App &command_named(const CLI::App &app, const std::string &name) {
    for (const CLI::App *const sub : app.get_subcommands({})) {
        if (sub->get_name() == name) {
            return *sub;
        }
    }
    throw usage_error("there is no command \"" + name + "\"" +
                      suggestion(name, command_names(app)) + " (see renewer-pack --help)");
}

std::string complaint(const CLI::App &app, const CLI::ParseError &error) {
    const std::vector<CLI::App *> given = app.get_subcommands();
    const CLI::App &at = given.empty() ? app : *given.front();
    const std::string help =
        " (see renewer-pack " + (given.empty() ? "--help" : "help " + at.get_name()) + ")";
    std::vector<std::string> rest = app.remaining(true);
    if (!rest.empty()) {
        const std::string &word = rest.front();
        if (!word.starts_with('-')) {
            return given.empty() ? "there is no command \"" + word + "\"" +
                                       suggestion(word, command_names(app)) + help
                                 : "\"" + word + "\" is one word too many" + help;
        }
        std::vector<std::string> options;
        for (const CLI::Option *const option : at.get_options()) {
            for (const std::string &name : option->get_lnames()) {
                options.push_back("--" + name);
            }
        }
        return "there is no option \"" + word + "\"" + suggestion(word, options) + help;
    }
    return error.what() + help;
}

} // namespace pack
