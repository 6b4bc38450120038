#include "description.h"

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace pictures {

namespace {

const std::map<std::string, anchor> anchors = {
    {"top-left", {0, 0}},    {"top", {0.5, 0}},      {"top-right", {1, 0}},
    {"left", {0, 0.5}},      {"centre", {0.5, 0.5}}, {"right", {1, 0.5}},
    {"bottom-left", {0, 1}}, {"bottom", {0.5, 1}},   {"bottom-right", {1, 1}},
};

// The words of a line, taken one by one.
struct reader {
    std::istringstream words;

    std::string word() {
        std::string taken;
        if (!(words >> taken)) {
            throw std::runtime_error("something is missing at the end");
        }
        return taken;
    }
    double number() { return std::stod(word()); }
    point place() {
        const double x = number();
        return {x, number()};
    }
    colour paint() {
        const std::string name = word();
        if (name == "black") {
            return {0, 0, 0};
        }
        if (name == "white") {
            return {255, 255, 255};
        }
        if (name.size() != 7 || name[0] != '#') {
            throw std::runtime_error("\"" + name + "\" is no colour");
        }
        const unsigned long value = std::stoul(name.substr(1), nullptr, 16);
        return {static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
                static_cast<uint8_t>(value)};
    }
    anchor anchored() {
        const std::string name = word();
        const auto known = anchors.find(name);
        if (known == anchors.end()) {
            throw std::runtime_error("\"" + name + "\" is no place of a text");
        }
        return known->second;
    }
    std::string rest() {
        std::string taken;
        std::getline(words >> std::ws, taken);
        return taken;
    }
    bool at_end() { return (words >> std::ws).eof(); }
};

// What has been drawn so far; the elements go to all frames of the last picture.
struct drawing {
    std::filesystem::path fonts;
    std::filesystem::path font;
    std::vector<named_picture> done;
    size_t frames = 0;

    template <typename element>
    void on_each_frame(element draw_element) {
        for (size_t frame = 0; frame < frames; ++frame) {
            draw_element(done[done.size() - frames + frame].content, static_cast<int>(frame));
        }
    }
};

void start_picture(drawing &to, reader &line) {
    const std::string name = line.word();
    const int width = static_cast<int>(line.number());
    const int height = static_cast<int>(line.number());
    const colour background = line.paint();
    to.frames = line.at_end() ? 1 : static_cast<size_t>(line.number());
    const size_t number = name.find("%d");
    for (size_t frame = 0; frame < to.frames; ++frame) {
        std::string frame_name = name;
        if (number != std::string::npos) {
            frame_name.replace(number, 2, std::to_string(frame));
        }
        to.done.push_back({frame_name, canvas(width, height, background)});
    }
}

void add_text(drawing &to, reader &line) {
    const anchor anchored = line.anchored();
    const point place = line.place();
    const double size = line.number();
    const colour paint = line.paint();
    const std::string text = line.rest();
    to.on_each_frame([&](canvas &on, int) {
        draw_text(on, to.fonts / to.font, size, place, anchored, paint, text);
    });
}

void add_line(drawing &to, reader &line) {
    const point from = line.place();
    const point end = line.place();
    const double thickness = line.number();
    const colour paint = line.paint();
    to.on_each_frame([&](canvas &on, int) { draw_line(on, from, end, thickness, paint); });
}

void add_box(drawing &to, reader &line) {
    const point corner = line.place();
    const point size = line.place();
    const double radius = line.number();
    const colour paint = line.paint();
    to.on_each_frame([&](canvas &on, int) { draw_box(on, corner, size.x, size.y, radius, paint); });
}

void add_spinner(drawing &to, reader &line) {
    const point centre = line.place();
    const double radius = line.number();
    const double dot = line.number();
    const colour paint = line.paint();
    to.on_each_frame([&](canvas &on, int frame) {
        draw_spinner(on, centre, radius, dot, paint, frame, static_cast<int>(to.frames));
    });
}

void set_font(drawing &to, reader &line) {
    to.font = line.word();
}

const std::map<std::string, void (*)(drawing &, reader &)> elements = {
    {"font", set_font}, {"picture", start_picture}, {"text", add_text},
    {"line", add_line}, {"box", add_box},           {"spinner", add_spinner},
};

void follow(drawing &to, const std::string &text) {
    reader line{std::istringstream(text)};
    if (line.at_end() || text.starts_with("# ")) {
        return;
    }
    const std::string element = line.word();
    const auto known = elements.find(element);
    if (known == elements.end()) {
        throw std::runtime_error("\"" + element + "\" is no element");
    }
    known->second(to, line);
    if (!line.at_end()) {
        throw std::runtime_error("more than \"" + element + "\" takes");
    }
}

} // namespace

std::vector<named_picture> draw(const std::filesystem::path &description,
                                const std::filesystem::path &fonts) {
    std::ifstream file(description);
    if (!file) {
        throw std::runtime_error("cannot read " + description.string());
    }
    drawing result{fonts, {}, {}, 0};
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        try {
            follow(result, text);
        } catch (const std::exception &error) {
            throw std::runtime_error(description.string() + ":" + std::to_string(number) + ": " +
                                     error.what());
        }
    }
    return std::move(result.done);
}

} // namespace pictures
