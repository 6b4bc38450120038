#include "svg.h"

#include <cstdio>

namespace document_pictures {

namespace {

template <typename... values>
std::string formatted(const char *format, values... given) {
    char text[512];
    snprintf(text, sizeof(text), format, given...);
    return text;
}

} // namespace

svg::svg(int width, int height)
    : content(formatted("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
                        "font-family=\"sans-serif\" font-size=\"12\">\n"
                        "<defs><marker id=\"head\" orient=\"auto\" markerWidth=\"8\" "
                        "markerHeight=\"8\" refX=\"7\" refY=\"4\">"
                        "<path d=\"M0 0 8 4 0 8z\" fill=\"#444\"/></marker></defs>\n",
                        width, height)) {
    box(0, 0, width, height, "#fcfcfa");
}

void svg::box(double x, double y, double width, double height, const char *colour) {
    content += formatted("<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" fill=\"%s\"/>\n", x, y,
                         width, height, colour);
}

void svg::words(double x, double y, const std::string &text, const char *anchor, bool bold) {
    content += formatted("<text x=\"%g\" y=\"%g\" text-anchor=\"%s\" fill=\"#222\"%s>%s</text>\n",
                         x, y, anchor, bold ? " font-weight=\"bold\"" : "", text.c_str());
}

void svg::arrow(double x, double y, double end_x, double end_y) {
    content += formatted("<path d=\"M%g %g %g %g\" stroke=\"#444\" stroke-width=\"1.5\" "
                         "marker-end=\"url(#head)\"/>\n",
                         x, y, end_x, end_y);
}

std::string svg::drawn() const {
    return content + "</svg>\n";
}

} // namespace document_pictures
