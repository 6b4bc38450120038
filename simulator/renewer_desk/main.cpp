// The desk: runs updates in a simulated unit and explains runs in the field.

#include "simulator/renewer_desk/help.h"
#include "simulator/renewer_desk/options.h"

#include <cstdio>
#include <exception>

namespace {

using namespace simulator;

int complain(const std::string &what, int status) {
    fflush(stdout);
    fprintf(stderr, "renewer-desk: %s\n", what.c_str());
    return status;
}

// The help of a command is a text file of its own.
void set_help(CLI::App &command, const std::string &text) {
    struct given_text : CLI::FormatterBase {
        explicit given_text(std::string help) : shown(std::move(help)) {}
        std::string make_help(const CLI::App *, std::string, CLI::AppFormatMode) const override {
            return shown;
        }
        std::string shown;
    };
    command.formatter(std::make_shared<given_text>(text));
}

void take_any_model(run_options &options, const std::string &model) {
    options.oled = model == "oled";
    if (options.oled) {
        return;
    }
    try {
        const std::string pn = pn_of_model(model);
        options.changes.push_back([pn](unit_description &unit) { unit.pn = pn; });
    } catch (const std::invalid_argument &) {
        throw usage_error("--model takes led, screen or oled");
    }
}

void add_demo(CLI::App &app, std::function<int()> &chosen) {
    CLI::App *const demo = app.add_subcommand("demo");
    set_help(*demo, std::string(demo_help) + option_help);
    auto options = std::make_shared<run_options>();
    options->expected = "any";
    add_run_options(*demo, *options);
    demo->remove_option(demo->get_option("--model"));
    demo->add_option_function<std::string>(
        "--model", [options](const std::string &model) { take_any_model(*options, model); });
    demo->add_flag_callback("--built-in", [options] {
        options->screen_options.emplace_back("--built-in");
        options->changes.push_back([](unit_description &unit) { unit.prompt_pictures = "none"; });
    });
    demo->callback([=, &chosen] { chosen = [=] { return run(*options); }; });
}

void add_run(CLI::App &app, std::function<int()> &chosen) {
    CLI::App *const command = app.add_subcommand("run");
    set_help(*command, std::string(run_help) + option_help);
    auto options = std::make_shared<run_options>();
    options->expected = "updated";
    command->add_option("PACKAGE", options->package)->required();
    command->add_option("--kind", options->overrides.kind);
    command->add_option("--meant-for", options->overrides.meant_for);
    command->add_option("--path", options->overrides.path);
    add_run_options(*command, *options);
    command->callback([=, &chosen] { chosen = [=] { return run(*options); }; });
}

void add_panel(CLI::App &app, std::function<int()> &chosen) {
    CLI::App *const command = app.add_subcommand("panel");
    set_help(*command, panel_help);
    auto options = std::make_shared<run_options>();
    options->speed = 1;
    auto port = std::make_shared<int>(0);
    command->add_option("PACKAGE", options->package);
    command->add_option("--port", *port)->check(CLI::Range(0, 65535));
    add_unit_options(*command, *options);
    add_speed(*command, *options);
    command->remove_option(command->get_option("--model"));
    command->add_option_function<std::string>(
        "--model", [options](const std::string &model) { take_any_model(*options, model); });
    command->callback([=, &chosen] { chosen = [=] { return panel(*options, *port); }; });
}

void add_explain(CLI::App &app, std::function<int()> &chosen) {
    CLI::App *const command = app.add_subcommand("explain");
    set_help(*command, explain_help);
    auto log = std::make_shared<std::filesystem::path>();
    command->add_option("LOG", *log)->required();
    command->callback([=, &chosen] { chosen = [=] { return explain(*log); }; });
}

} // namespace

int main(int argc, char **argv) {
    CLI::App app("", "renewer-desk");
    app.require_subcommand(1);
    set_help(app, main_help);
    std::function<int()> chosen;
    add_demo(app, chosen);
    add_run(app, chosen);
    add_panel(app, chosen);
    add_explain(app, chosen);
    try {
        app.parse(argc, argv);
        return chosen();
    } catch (const CLI::Success &) {
        CLI::App *const command =
            app.get_subcommands().empty() ? &app : app.get_subcommands().front();
        fputs(command->help().c_str(), stdout);
        return as_expected;
    } catch (const CLI::ParseError &error) {
        return complain(std::string(error.what()) + "; see --help", wrong_usage);
    } catch (const usage_error &wrong) {
        return complain(std::string(wrong.what()) + "; see --help", wrong_usage);
    } catch (const std::exception &trouble) {
        return complain(trouble.what(), system_error);
    }
}
