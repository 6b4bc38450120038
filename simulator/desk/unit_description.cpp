#include "simulator/desk/unit_description.h"

#include "simulator/unit/description.h"

#include <cctype>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace simulator {

namespace {

namespace fs = std::filesystem;

constexpr int unit_frames = 129;  // of the animation, 0 to 128
constexpr size_t longest_pn = 69; // the host record has 70 characters, with the terminator

void put(unit &it, const unit_file &file) {
    switch (file.is) {
    case unit_file::kind::text:
        it.file(file.path, file.content, file.mode);
        break;
    case unit_file::kind::copy:
        it.file(file.path, content_of_file(file.content), file.mode);
        break;
    case unit_file::kind::link:
        it.without(file.path).link(file.path, file.content);
        break;
    case unit_file::kind::directory:
        it.directory(file.path);
        break;
    case unit_file::kind::missing:
        it.without(file.path);
        break;
    }
}

// The desk has pictures for one turn of the animation; a unit has 129 frames.
void repeat_frames(const fs::path &tree) {
    const auto frame = [&](int number) {
        return below(tree, "/reserve/update/updating_" + std::to_string(number) + ".bmp");
    };
    int turn = 0;
    while (fs::exists(frame(turn))) {
        ++turn;
    }
    for (int number = turn; turn > 0 && number < unit_frames; ++number) {
        fs::create_hard_link(frame(number % turn), frame(number));
    }
}

void put_pictures(unit &it, const std::string &which) {
    if (which == "usual") {
        it.with_prompt_pictures().before_start(repeat_frames);
    } else if (which != "none") {
        for (const auto &entry : fs::directory_iterator(which)) {
            put(it, {"/reserve/update/" + entry.path().filename().string(), unit_file::kind::copy,
                     entry.path().string()});
        }
    }
}

void put_supply(unit &it, const measured &supply, int channel, unit &(unit::*volts)(double)) {
    if (supply.raw) {
        it.adc(channel, std::to_string(static_cast<long>(supply.value)) + "\n");
    } else {
        (it.*volts)(supply.value);
    }
}

} // namespace

std::string content_of_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    if (!file) {
        throw std::runtime_error(path + ": cannot be read");
    }
    return content;
}

std::string model_of(const unit_description &described) {
    return described.pn.substr(2, 2);
}

bool has_screen(const unit_description &described) {
    return model_of(described) == "16";
}

key power_key_of(const unit_description &described) {
    return has_screen(described) ? key::power : key::right;
}

std::string pn_of_model(std::string_view model) {
    const std::string two(model == "led" ? "13" : model == "screen" ? "16" : model);
    if (two.size() != 2) {
        throw std::invalid_argument("\"" + std::string(model) +
                                    "\" is not a model; expected led, screen, or characters 2 "
                                    "and 3 of the part number");
    }
    return checked_pn("10" + two + "563400120000");
}

std::string checked_pn(std::string_view pn) {
    for (const char one : pn) {
        if (!std::isgraph(static_cast<unsigned char>(one))) {
            throw std::invalid_argument("a part number has letters, digits and signs only");
        }
    }
    if (pn.size() < 4 || pn.size() > longest_pn) {
        throw std::invalid_argument("a part number has 4 to " + std::to_string(longest_pn) +
                                    " characters");
    }
    return std::string(pn);
}

void describe(unit &it, const unit_description &described) {
    it.part_number(described.pn).usb_mode(described.usb_mode);
    put_supply(it, described.battery, 1, &unit::battery_volts);
    put_supply(it, described.external, 2, &unit::external_volts);
    put_supply(it, described.type_c, 3, &unit::type_c_volts);
    if (has_screen(described)) {
        put_pictures(it, described.prompt_pictures);
    }
    for (const unit_file &file : described.files) {
        put(it, file);
    }
    for (const key_press &pressed : described.keys) {
        it.press(pressed.which == key::power ? power_key_of(described) : pressed.which,
                 pressed.when, pressed.hold);
    }
    if (described.acknowledged_after) {
        it.acknowledge_end(*described.acknowledged_after);
    }
    if (described.lcd_transfers) {
        it.spi_transfers_that_work(*described.lcd_transfers);
    }
    if (described.disk_full) {
        it.fill_disk(described.full_below, *described.disk_full);
    }
    if (described.power_cut) {
        it.cut_power(*described.power_cut);
    }
}

} // namespace simulator
