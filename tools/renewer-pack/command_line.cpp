#include "command_line.h"

#include "command_info.h"
#include "commands.h"
#include "manuals.h"
#include "progress.h"
#include "words.h"

#include <memory>

namespace pack {

namespace {

// Names of values; the completion depends on them.
constexpr const char *file = "FILE";
constexpr const char *directory = "DIR";
constexpr const char *node_type = "TYPE";

constexpr size_t help_columns = 79;

struct usage_formatter : CLI::Formatter {
    std::string make_usage(const CLI::App *app, std::string) const override {
        return "Usage: " + synopsis(*app) + "\n";
    }
    std::string make_option_opts(const CLI::Option *option) const override {
        return is_flag(*option) || is_positional(*option) ? "" : " " + option->get_type_name();
    }
    std::string make_option_desc(const CLI::Option *option) const override {
        return wrapped(option->get_description(), help_columns - get_column_width());
    }
    std::string make_footer(const CLI::App *app) const override {
        const std::string footer = wrapped(app->get_footer(), help_columns);
        return footer.empty() ? "" : footer + "\n";
    }
    std::string make_option_usage(const CLI::Option *option) const override {
        return option->get_name(true);
    }
};

template <typename options_type>
struct added_command {
    CLI::App *sub;
    std::shared_ptr<options_type> options;
};

template <typename options_type>
added_command<options_type> add_command(CLI::App &app, chosen_command &chosen, const char *name,
                                        const char *description, int (*run)(const options_type &)) {
    auto options = std::make_shared<options_type>();
    CLI::App *const sub = app.add_subcommand(name, description);
    sub->callback([=, &chosen] { chosen = [=] { return run(*options); }; });
    return {sub, options};
}

CLI::Option *value(CLI::App *command, const std::string &names, auto &into, const char *type,
                   const std::string &description) {
    return command->add_option(names, into, description)->type_name(type);
}

void add_json(CLI::App *command, bool &as_json) {
    command->add_flag("--json", as_json, "Print JSON, for programs");
}

void add_key(CLI::App *command, std::filesystem::path &key) {
    value(command, "--key", key, file,
          "Demand a signature beside each package, FILE.minisig, by the holder of this public key");
}

void add_inputs(CLI::App *command, std::string &inputs) {
    value(command, "--inputs", inputs, "XYZ",
          "The unit's three hardware-presence inputs as they read, like 000")
        ->check([](const std::string &text) {
            return text.size() == 3 ? std::string() : "expected three characters, not " + text;
        });
}

void add_progress(CLI::App *command) {
    command
        ->add_option_function<std::string>(
            "--progress", [](const std::string &mode) { set_progress(mode); },
            "On standard error: a bar when it is a terminal, a line of JSON ten times a second, "
            "or nothing")
        ->type_name("auto|json|none")
        ->check([](const std::string &mode) {
            return mode == "auto" || mode == "json" || mode == "none"
                       ? std::string()
                       : "expected auto, json or none, not " + mode;
        });
}

void add_quiet(CLI::App *command, bool &quiet) {
    command->add_flag("-q,--quiet", quiet, "Print errors only");
}

void add_show(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] =
        add_command(app, chosen, "show", "Print header and node table of a package", show);
    value(sub, "FILE", options->package, file, "The package, of either layout")->required();
    add_json(sub, options->as_json);
    sub->add_flag("--hex", options->as_bytes,
                  "Print header and node table as bytes, each field with its name");
    sub->footer("With --json it also says whether the digest holds, and what else is wrong with "
                "the package, as check does.");
}

void add_check(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] =
        add_command(app, chosen, "check",
                    "Check packages and say what is wrong with them, one line for each", check);
    value(sub, "FILE", options->packages, file, "The packages")->required();
    add_key(sub, options->key);
    add_json(sub, options->as_json);
    add_progress(sub);
    sub->footer(
        "It looks at more than a unit does: at magic and digest, and also at lengths that do not "
        "agree, texts without an end, nodes past the end of the file, nodes that overlap, two "
        "nodes of a type, types without a name, a flag that does not match the nodes, padding that "
        "is not zero, and more than 65536 nodes, which no unit takes. Of more than 20 defects it "
        "prints the first 20 and how many more there are.");
}

// --only takes every word up to the next option. If FILE is missing, its last word is FILE, unless
// that is a type.
void take_package_from_types(unpack_options &options) {
    if (options.package.empty() && options.only.size() > 1 && !node_type_of(options.only.back())) {
        options.package = options.only.back();
        options.only.pop_back();
    }
    if (options.package.empty()) {
        throw CLI::RequiredError("FILE");
    }
}

void add_unpack(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] = add_command(
        app, chosen, "unpack", "Extract the nodes of a package into one file for each", unpack);
    value(sub, "FILE", options->package, file,
          "The package, of either layout; it may also follow the types of --only")
        ->option_text(needed);
    value(sub, "-C,--directory", options->directory, directory,
          "Where to put the files (made as needed; default: here)");
    value(sub, "--only", options->only, node_type,
          "Extract these node types only, by name or number")
        ->expected(1, CLI::detail::expected_max_vector_size);
    add_key(sub, options->key);
    sub->add_flag("--force", options->force,
                  "Replace files that exist, and extract what is there of a package that fails its "
                  "check (which ends with 1 all the same)");
    add_quiet(sub, options->quiet);
    add_progress(sub);
    sub->parse_complete_callback([kept = options] { take_package_from_types(*kept); });
    sub->footer("Each node becomes a file named after its type: install.sh for the install "
                "script, which is made executable, and the type's name with .bin for the others. "
                "A package that fails its check is refused, and nothing is written. A file appears "
                "at its place when it is complete.");
}

void add_create(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] =
        add_command(app, chosen, "create", "Make a package of the new layout", create);
    value(sub, "-o,--output", options->output, file, "The package to write")->option_text(needed);
    value(sub, "--version", options->version, "M.S.R.T",
          "Four numbers, like 1.1.4.0 (14 characters)")
        ->option_text(needed);
    value(sub, "--pn", options->pn, "PN",
          "Part number that it is meant for (19 letters and digits)")
        ->option_text(needed);
    value(sub, "--revision", options->revision, "REV", "Source revision (8 characters)")
        ->option_text(needed);
    value(sub, "--manifest", options->manifest, file,
          "JSON file that says what is not given here, and names node files under \"nodes\"");
    sub->add_flag("--print-manifest", options->print_manifest,
                  "Make no package: print the manifest of what is given");
    sub->add_flag("--force", options->force, "Replace the package when it exists");
    add_quiet(sub, options->quiet);
    add_progress(sub);
    value(sub, "TYPE=FILE", options->sources, "TYPE=FILE",
          "Node files by node type, like kernel=zImage (see: renewer-pack types)")
        ->option_text(needed);
    sub->footer(
        "A manifest is a JSON object with the texts version, pn and revision, and with nodes, an "
        "object with the file of each type. Paths are relative to the manifest. ${NAME} in a text "
        "is the variable NAME of the environment, $$ a dollar sign. What is given on the command "
        "line comes first.\n"
        "\n"
        "SOURCE_DATE_EPOCH in the environment is the time of making, in seconds since 1970 (UTC, "
        "up to the year 9999), so that the same files make the same package. Without it the "
        "present local time is written.\n"
        "\n"
        "The package appears at its place when it is complete; a failed or interrupted run leaves "
        "everything as it was.");
}

void add_find(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] =
        add_command(app, chosen, "find",
                    "Search directories as a unit does, and say what it makes of each file", find);
    value(sub, "DIR", options->directories, directory,
          "Directories in the order of the search (default: /media/sda1 /firmware /mnt)");
    value(sub, "--unit", options->unit, file, "Host record of the unit (/update/hw/sys there)")
        ->required();
    add_inputs(sub, options->inputs);
    add_json(sub, options->as_json);
    sub->footer("Like the unit's own search it knows packages of the old layout alone, and only "
                "directories that can be read and written; what create makes is of the new layout "
                "(fit says which unit takes it).");
}

void add_fit(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] = add_command(
        app, chosen, "fit", "Say whether units would take a package, and what they compare", fit);
    value(sub, "FILE", options->package, file, "The package, of either layout")->required();
    value(sub, "--unit", options->unit, file, "Host record of one unit");
    value(sub, "--units", options->units, directory, "Folder of host records, a row for each");
    sub->add_option("--kind", options->kind,
                    "Package kind that the updater is started with (default: that of the package)")
        ->type_name("N")
        ->check([](const std::string &text) {
            const bool is_number = !text.empty() && text.size() < 10 &&
                                   text.find_first_not_of("0123456789") == std::string::npos;
            return is_number ? std::string() : "expected a number, not " + text;
        });
    value(sub, "--pn", options->pn, "XX",
          "The two part-number characters that it is started with (kinds 0 to 2; default: those "
          "of the package)")
        ->check([](const std::string &text) {
            return text.size() == 2 ? std::string() : "expected two characters, not " + text;
        });
    add_inputs(sub, options->inputs);
    add_json(sub, options->as_json);
    sub->footer(
        "The rules are those of the updater's run (kind 3 for the new layout; 0, 1 or 2 for an old "
        "package of a host, a GNSS board or a radio), and for the old layout those of the search "
        "on storage too. A unit takes the package when no rule speaks against it. Exit status 0: "
        "one unit at least takes it; 1: none does.");
}

void add_unit(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] =
        add_command(app, chosen, "unit", "Show host records of units, or make one", unit);
    value(sub, "FILE", options->records, file, "Host records to show");
    value(sub, "-o,--output", options->output, file, "The host record to make");
    value(sub, "--pn", options->pn, "PN", "Part number of the unit (4 to 69 letters and digits)");
    value(sub, "--leading", options->leading, "HEX",
          "The seven bytes before it, as 14 hexadecimal digits (default: zero; nobody reads them)");
    sub->add_flag("--force", options->force, "Replace the record when it exists");
    sub->footer("A host record is what a unit keeps in /update/hw/sys: who it is.");
}

void add_diff(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] = add_command(
        app, chosen, "diff", "Say in which header fields and nodes two packages differ", diff);
    value(sub, "A", options->first, file, "A package")->required();
    value(sub, "B", options->second, file, "The package to compare it with")->required();
    add_json(sub, options->as_json);
    sub->footer(
        "Nodes are compared by type, size and the MD5 digest of their payloads. Exit status "
        "0: nothing differs; 1: something does.");
}

void add_types(CLI::App &app, chosen_command &chosen) {
    const auto [sub, options] = add_command(app, chosen, "types", "List the node types", types);
    add_json(sub, options->as_json);
    sub->footer("With their numbers, their bits in the flag of the header, and the names of the "
                "files that they are extracted to.");
}

void add_help(CLI::App &app, chosen_command &chosen) {
    CLI::App *const sub = app.add_subcommand("help", "Print help, on a command when it is named");
    auto name = std::make_shared<std::string>();
    value(sub, "COMMAND", *name, "COMMAND", "The command");
    sub->callback([=, &app, &chosen] {
        chosen = [=, &app] {
            const CLI::App &about = name->empty() ? app : command_named(app, *name);
            // CLI11 would return the help of this subcommand, which has just been parsed.
            printf(
                "%s",
                about.get_formatter()->make_help(&about, "", CLI::AppFormatMode::Normal).c_str());
            return int{good};
        };
    });
}

// Not listed in the help: these are for the build, which installs their output.
void add_manuals(CLI::App &app, chosen_command &chosen) {
    CLI::App *const completion =
        app.add_subcommand("completion", "Print the completion for a shell")->group("");
    auto shell = std::make_shared<std::string>();
    value(completion, "SHELL", *shell, "bash|zsh|fish", "The shell")->required();
    completion->callback(
        [=, &app, &chosen] { chosen = [=, &app] { return print_completion(app, *shell); }; });
    CLI::App *const manual =
        app.add_subcommand("manual", "Print the manual page, or that of a command")->group("");
    auto name = std::make_shared<std::string>();
    value(manual, "COMMAND", *name, "COMMAND", "The command");
    manual->callback(
        [=, &app, &chosen] { chosen = [=, &app] { return print_manual(app, *name); }; });
}

} // namespace

void describe_commands(CLI::App &app, chosen_command &chosen) {
    app.formatter(std::make_shared<usage_formatter>());
    app.require_subcommand(1);
    app.set_help_flag("-h,--help", "Print this help");
    app.set_version_flag("-V,--version", "renewer-pack " RENEWER_VERSION);
    add_show(app, chosen);
    add_check(app, chosen);
    add_unpack(app, chosen);
    add_create(app, chosen);
    add_fit(app, chosen);
    add_unit(app, chosen);
    add_find(app, chosen);
    add_diff(app, chosen);
    add_types(app, chosen);
    add_help(app, chosen);
    for (CLI::App *const sub : app.get_subcommands({})) {
        sub->group("Commands");
    }
    add_manuals(app, chosen);
}

} // namespace pack
