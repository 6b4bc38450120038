#include "simulator/desk/unit_file.h"
#include "simulator/renewer_desk/play.h"
#include "simulator/report/report.h"
#include "simulator/unit/package.h"
#include "simulator/unit/parts.h"
#include "simulator/unit/temporary_directory.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace simulator {

namespace {

namespace fs = std::filesystem;

constexpr const char working_script[] = "#!/bin/sh\n"
                                        "echo writing the new firmware\n"
                                        "sleep 4\n"
                                        "echo done\n";

// The updater waits 2 s for the second of two presses; above this speed the desk cannot time them
// exactly enough.
constexpr double fastest_for_two_presses = 100;

void refuse_what_does_not_go_together(const unit_description &described,
                                      const run_options &options) {
    if (!options.screen_options.empty() && !has_screen(described)) {
        throw usage_error(options.screen_options.front() + " goes with a screen (--model screen)");
    }
    const bool two_presses = std::ranges::count_if(described.keys, [&](const key_press &one) {
                                 return !has_screen(described) && one.which == key::power;
                             }) > 1;
    if (two_presses && options.speed > fastest_for_two_presses) {
        throw usage_error(
            "two presses of the power key come within 2 s: --speed up to 100 can tell "
            "them apart");
    }
}

unit_description described_by(const run_options &options) {
    unit_description described =
        options.unit_file.empty() ? unit_description() : read_unit_file(options.unit_file);
    for (const unit_change &change : options.changes) {
        change(described);
    }
    if (described.keys.empty() || !options.answer.empty()) {
        described.keys =
            keys_of_answer(options.answer.empty() ? "ok" : options.answer, has_screen(described));
    }
    refuse_what_does_not_go_together(described, options);
    return described;
}

void describe_command(run_setup &setup) {
    for (const std::string &argument : setup.arguments) {
        setup.introduction += " " + argument;
    }
}

// Without an update, options that describe a unit make no sense.
void refuse_for_oled(const run_options &options) {
    if (!options.changes.empty() || !options.unit_file.empty() || !options.answer.empty() ||
        !options.script.empty() || !options.report.empty() || !options.json.empty()) {
        throw usage_error("--model oled takes --speed, --pictures, --verbose and --plain only");
    }
}

// Instead of an update, the example of the display middleware draws its status screen.
run_setup oled_example() {
    run_setup setup;
    setup.program = part(oled_status_place);
    setup.described.prompt_pictures = "none";
    setup.described.files.push_back(
        {"/reserve/battery.bmp", unit_file::kind::copy, part(oled_battery_place), 0644});
    setup.arguments = {"/dev/spidev0.0", "/reserve/battery.bmp", "60"};
    setup.introduction = "A unit with a grey OLED; a program draws on it through the display "
                         "middleware.\nrenewer-oled-status";
    describe_command(setup);
    return setup;
}

run_setup update_of(const run_options &options, const temporary_directory &desk) {
    run_setup setup;
    setup.described = described_by(options);
    setup.script = options.script;
    fs::path package = options.package;
    if (package.empty()) {
        package = desk.path / "update_demo_b20240523.bin";
        make_package(package, setup.described.pn,
                     options.script.empty() ? working_script
                                            : content_of_file(options.script.string()));
    }
    setup.offer = look_at_package(package, setup.described, options.overrides);
    setup.arguments = setup.offer->arguments;
    setup.introduction = std::string("A unit with ") +
                         (has_screen(setup.described) ? "a colour LCD" : "LEDs") +
                         "; its application has unpacked a package into /firmware/update.\nrenewer";
    describe_command(setup);
    return setup;
}

// Prints the last lines of a failed script's log.
void show_script_log(const run_story &story) {
    constexpr size_t last_lines = 20;
    if (story.result.which != ending::script_failed &&
        story.result.which != ending::script_overran) {
        return;
    }
    const std::string log = story.runs.back().end.file("/data/app/log/update.log").value_or("");
    size_t begin = log.size();
    for (size_t lines = 0; begin > 0 && lines <= last_lines;) {
        begin = log.rfind('\n', begin - 1);
        begin = begin == std::string::npos ? 0 : begin;
        ++lines;
    }
    printf("\nThe end of the script's log (/data/app/log/update.log):\n%s",
           printable_lines(log.substr(begin == 0 ? 0 : begin + 1)).c_str());
}

void write_file(const fs::path &path, const std::string &content) {
    if (path.empty()) {
        return;
    }
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error(path.string() + ": cannot be written");
    }
}

int compare_with_expected(const run_story &story, const std::string &expected) {
    std::string word = story.result.word;
    std::ranges::transform(word, word.begin(),
                           [](unsigned char letter) { return tolower(letter); });
    return expected == "any"  ? (story.result.which == ending::cut ? not_as_expected : as_expected)
           : word == expected ? as_expected
                              : not_as_expected;
}

int conclude(const run_story &story, const run_options &options) {
    if (end_is_requested()) {
        printf("INTERRUPTED\n");
        return interrupted;
    }
    if (!options.report.empty() || !options.json.empty()) {
        const nlohmann::ordered_json data = data_of(story);
        write_file(options.json,
                   data.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
        if (!options.report.empty()) {
            write_file(options.report, report_of(data));
        }
    }
    show_script_log(story);
    if (!story.runs.empty()) {
        printf("\nPeak memory of the program: %ld KiB\n", story.runs.back().end.peak_memory_kib);
    }
    printf("%s\n", story.result.line().c_str());
    return compare_with_expected(story, options.expected);
}

} // namespace

int run(const run_options &options) {
    take_signals();
    const temporary_directory desk;
    if (options.oled) {
        refuse_for_oled(options);
        const run_story story = play(oled_example(), options);
        return end_is_requested()                       ? interrupted
               : story.runs.back().end.exit_status == 0 ? as_expected
                                                        : not_as_expected;
    }
    run_story story;
    try {
        story = play(update_of(options, desk), options);
    } catch (const package_refused &why) {
        story.described = described_by(options);
        story.result = refused_package(why.what());
    } catch (const std::exception &) {
        if (!end_is_requested()) {
            throw;
        }
    }
    return conclude(story, options);
}

} // namespace simulator
