#include "simulator/desk/unit_file.h"
#include "simulator/panel_page/server.h"
#include "simulator/renewer_desk/commands.h"
#include "simulator/renewer_desk/play.h"
#include "simulator/unit/parts.h"
#include "simulator/unit/temporary_directory.h"

#include <cstdio>

namespace simulator {

namespace {

namespace fs = std::filesystem;

// Volts per count of each converter input, as exactly as the position of a slider needs it.
constexpr double battery_count = 5.255 * 1.8 / 1023;
constexpr double external_count = 0.04084;
constexpr double type_c_count = 18.0 / 1023;

double volts_of(const measured &supply, double count) {
    return supply.raw ? supply.value * count : supply.value;
}

// Keys and the acknowledgement are up to the user of the page, unless the command line describes
// them.
unit_description described_by(const run_options &options) {
    unit_description described =
        options.unit_file.empty() ? unit_description() : read_unit_file(options.unit_file);
    described.keys.clear();
    described.acknowledged_after.reset();
    for (const unit_change &change : options.changes) {
        change(described);
    }
    return described;
}

panel_subject front_of(const unit_description &described, const fs::path &package) {
    panel_subject subject;
    subject.model = has_screen(described) ? "screen" : "led";
    subject.package = package;
    subject.volts = {{"battery", volts_of(described.battery, battery_count)},
                     {"external", volts_of(described.external, external_count)},
                     {"type_c", volts_of(described.type_c, type_c_count)}};
    subject.usb_mode = described.usb_mode;
    subject.prepare = [described](const fs::path &chosen) {
        const package_offer offer = look_at_package(chosen, described, {});
        prepared_run ready;
        take(ready.described, offer);
        describe(ready.described, described);
        ready.arguments = offer.arguments;
        return ready;
    };
    return subject;
}

panel_subject front_of_oled() {
    panel_subject subject;
    subject.model = "oled";
    subject.prepare = [](const fs::path &) {
        prepared_run ready;
        ready.described.program(part(oled_status_place))
            .file("/reserve/battery.bmp", content_of_file(part(oled_battery_place)));
        ready.arguments = {oled_node, "/reserve/battery.bmp"};
        return ready;
    };
    return subject;
}

} // namespace

int panel(const run_options &options, int port) {
    if (options.oled != options.package.empty()) {
        throw usage_error(options.oled ? "--model oled takes no PACKAGE" : "PACKAGE is missing");
    }
    if (!options.oled && !fs::exists(options.package)) {
        throw usage_error(options.package.string() + ": no such file or directory");
    }
    take_signals();
    const temporary_directory desk;
    panel_subject subject =
        options.oled ? front_of_oled() : front_of(described_by(options), options.package);
    subject.clock_speed = options.speed;
    panel_session session(std::move(subject));
    serve_panel(
        session, port, desk.path,
        [](const std::string &address) {
            printf("The front panel is at\n\n    %s\n\nIt ends with Ctrl-C.\n", address.c_str());
            fflush(stdout);
        },
        end_is_requested);
    return interrupted;
}

} // namespace simulator
