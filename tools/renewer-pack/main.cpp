#include "commands.h"
#include "package_file.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <functional>
#include <system_error>

namespace {

using namespace pack;

constexpr const char *about =
    "Makes, checks, shows and unpacks update packages, and tells which one a unit would take.\n\n"
    "Exit status: 0 good, 1 a package was refused (or none was found), 2 used wrongly,\n"
    "3 the system refused something (a file that cannot be read, a full disk).";

using command = std::function<int()>;

void add_show(CLI::App &app, command &chosen) {
    CLI::App *const sub = app.add_subcommand("show", "Print header and node table of a package");
    auto options = std::make_shared<show_options>();
    sub->add_option("FILE", options->package, "The package, of either layout")->required();
    sub->add_flag("--json", options->json, "Print JSON, for programs");
    sub->callback([=, &chosen] { chosen = [=] { return show(*options); }; });
}

void add_check(CLI::App &app, command &chosen) {
    CLI::App *const sub = app.add_subcommand(
        "check", "Check packages and say what is wrong with them, one line for each");
    auto packages = std::make_shared<std::vector<std::filesystem::path>>();
    sub->add_option("FILE", *packages, "The packages")->required();
    sub->callback([=, &chosen] { chosen = [=] { return check(*packages); }; });
}

// --only takes every word up to the next option, so that of its words the last one is FILE when
// nothing else is, unless it is a type.
void take_package_from_types(unpack_options &options) {
    if (options.package.empty() && options.only.size() > 1 && !node_type_of(options.only.back())) {
        options.package = options.only.back();
        options.only.pop_back();
    }
    if (options.package.empty()) {
        throw CLI::RequiredError("FILE");
    }
}

// Help on `unpack`: FILE is required, though not where it stands.
struct file_is_required : CLI::Formatter {
    std::string make_option_usage(const CLI::Option *option) const override {
        return option->get_name();
    }
};

void add_unpack(CLI::App &app, command &chosen) {
    CLI::App *const sub =
        app.add_subcommand("unpack", "Extract the nodes of a package into one file for each");
    auto options = std::make_shared<unpack_options>();
    sub->add_option("FILE", options->package, "The package, of either layout")
        ->option_text("REQUIRED");
    sub->formatter(std::make_shared<file_is_required>());
    sub->footer("FILE may also follow the types of --only.");
    sub->add_option("-C,--directory", options->directory,
                    "Where to put the files (made as needed; default: here)")
        ->type_name("DIR");
    sub->add_option("--only", options->only, "Extract these node types only, by name or number")
        ->type_name("TYPE");
    sub->add_flag("--force", options->force, "Also unpack a package that fails its check");
    sub->callback([=, &chosen] {
        take_package_from_types(*options);
        chosen = [=] { return unpack(*options); };
    });
}

void add_create(CLI::App &app, command &chosen) {
    CLI::App *const sub = app.add_subcommand("create", "Make a package of the new layout");
    auto options = std::make_shared<create_options>();
    sub->add_option("-o,--output", options->output, "The package to write")
        ->required()
        ->type_name("OUT");
    sub->add_option("--version", options->version, "Four numbers, like 1.1.4.0 (14 characters)")
        ->type_name("M.S.R.T");
    sub->add_option("--pn", options->pn, "Part number that it is meant for (19 characters)")
        ->type_name("PN");
    sub->add_option("--revision", options->revision, "Source revision (8 characters)")
        ->type_name("REV");
    sub->add_option("--manifest", options->manifest,
                    "JSON file that names them, and the node files under \"nodes\"")
        ->type_name("JSON");
    sub->add_option("TYPE=FILE", options->sources,
                    "Node files by node type, like kernel=zImage (see: renewer-pack types)");
    sub->footer("SOURCE_DATE_EPOCH in the environment gives the time of making, in seconds since\n"
                "1970 (UTC), so that the same files make the same package.");
    sub->callback([=, &chosen] { chosen = [=] { return create(*options); }; });
}

void add_find(CLI::App &app, command &chosen) {
    CLI::App *const sub = app.add_subcommand(
        "find", "Search directories as a unit does, and say what it makes of each file");
    auto options = std::make_shared<find_options>();
    sub->add_option("DIR", options->directories,
                    "Directories in the order of the search (default: /media/sda1 /firmware /mnt)");
    sub->add_option("--unit", options->unit, "Host information file of the unit (/update/hw/sys)")
        ->required()
        ->type_name("SYSFILE");
    sub->add_option("--inputs", options->inputs,
                    "The unit's three hardware-presence inputs as they read, like 000")
        ->type_name("XYZ")
        ->check([](const std::string &text) {
            return text.size() == 3 ? std::string() : "three characters are wanted: " + text;
        });
    sub->callback([=, &chosen] { chosen = [=] { return find(*options); }; });
}

void add_types(CLI::App &app, command &chosen) {
    app.add_subcommand("types", "List the node types")->callback([&chosen] { chosen = types; });
}

int complain(const char *what, int status) {
    fflush(stdout);
    fprintf(stderr, "renewer-pack: %s\n", printable(what).c_str());
    return status;
}

int run(const command &chosen) {
    try {
        return chosen();
    } catch (const refused &reason) {
        return complain(reason.what(), package_refused);
    } catch (const misused &reason) {
        return complain(reason.what(), used_wrongly);
    } catch (const std::system_error &error) {
        return complain(error.what(), pack::system_error);
    } catch (const std::bad_alloc &) {
        return complain("out of memory", pack::system_error);
    }
}

// Standard output that was lost counts more than any other result.
int after_output(int status) {
    if (fflush(stdout) != 0 || ferror(stdout) != 0) {
        return complain("standard output could not be written", pack::system_error);
    }
    return status;
}

} // namespace

int main(int argc, char **argv) {
    CLI::App app(about, "renewer-pack");
    app.require_subcommand(1);
    app.set_version_flag("--version", "renewer-pack " RENEWER_VERSION);
    command chosen;
    add_show(app, chosen);
    add_check(app, chosen);
    add_unpack(app, chosen);
    add_create(app, chosen);
    add_find(app, chosen);
    add_types(app, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (argc > 1 && argv[1][0] != '-' && app.get_subcommands().empty()) {
            const std::string what = "there is no command \"" + std::string(argv[1]) + "\"";
            return complain((what + " (see renewer-pack --help)").c_str(), used_wrongly);
        }
        return after_output(app.exit(error) == 0 ? good : used_wrongly);
    }
    return after_output(run(chosen));
}
