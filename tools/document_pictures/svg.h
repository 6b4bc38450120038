#pragma once

#include <string>

namespace document_pictures {

// An SVG drawing of boxes and words on a light ground; positions are in pixels from the top left.
class svg {
public:
    svg(int width, int height);

    void box(double x, double y, double width, double height, const char *colour);
    // `anchor` is the part of the text that lies at `x`: "start", "middle" or "end"; y is the
    // baseline.
    void words(double x, double y, const std::string &text, const char *anchor = "start",
               bool bold = false);
    void arrow(double x, double y, double end_x, double end_y);

    std::string drawn() const;

private:
    std::string content;
};

} // namespace document_pictures
