#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace pictures {

canvas::canvas(int width_, int height_, colour background)
    : width(width_), height(height_),
      pixels(static_cast<size_t>(width_) * static_cast<size_t>(height_), background) {}

colour canvas::at(int x, int y) const {
    return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
}

void canvas::blend(int x, int y, colour paint, double coverage) {
    const auto mix = [coverage](uint8_t below, uint8_t above) {
        return static_cast<uint8_t>(std::lround(below + (above - below) * coverage));
    };
    colour &pixel =
        pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    pixel = {mix(pixel.red, paint.red), mix(pixel.green, paint.green), mix(pixel.blue, paint.blue)};
}

namespace {

// Fills a shape given by the distance of a point from its edge, negative inside.
template <typename distance>
void fill(canvas &on, colour paint, double opacity, distance from_edge) {
    for (int y = 0; y < on.height; ++y) {
        for (int x = 0; x < on.width; ++x) {
            const double coverage = std::clamp(0.5 - from_edge(point{x + 0.5, y + 0.5}), 0.0, 1.0);
            if (coverage > 0) {
                on.blend(x, y, paint, coverage * opacity);
            }
        }
    }
}

void fill_line(canvas &on, point from, point to, double thickness, colour paint, double opacity) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    const double length_squared = dx * dx + dy * dy;
    fill(on, paint, opacity, [&](point p) {
        const double along =
            length_squared == 0
                ? 0.0
                : std::clamp(((p.x - from.x) * dx + (p.y - from.y) * dy) / length_squared, 0.0,
                             1.0);
        return std::hypot(p.x - from.x - along * dx, p.y - from.y - along * dy) - thickness / 2;
    });
}

} // namespace

void draw_line(canvas &on, point from, point to, double thickness, colour paint) {
    fill_line(on, from, to, thickness, paint, 1);
}

void draw_box(canvas &on, point corner, double width, double height, double radius, colour paint) {
    const point centre = {corner.x + width / 2, corner.y + height / 2};
    fill(on, paint, 1, [&](point p) {
        const double x = std::abs(p.x - centre.x) - width / 2 + radius;
        const double y = std::abs(p.y - centre.y) - height / 2 + radius;
        return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) -
               radius;
    });
}

void draw_spinner(canvas &on, point centre, double radius, double dot, colour paint, int step,
                  int steps) {
    constexpr double faintest = 0.15;
    for (int i = 0; i < steps; ++i) {
        const double angle = 2 * std::numbers::pi * i / steps;
        const int age = (step - i + steps) % steps;
        const double opacity = std::max(faintest, 1 - static_cast<double>(age) / (steps - 1));
        const point place = {centre.x + radius * std::sin(angle),
                             centre.y - radius * std::cos(angle)};
        fill_line(on, place, place, dot, paint, opacity);
    }
}

} // namespace pictures
