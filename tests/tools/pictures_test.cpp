#include "tests/support/files.h"
#include "tests/support/pictures.h"

#include <gtest/gtest.h>

namespace {

// What the tool says of a description; its pictures are then in /tmp/drawn.
std::string draw(const std::string &description) {
    std::filesystem::remove_all("/tmp/drawn");
    put_file("/tmp/description", description);
    return netpbm(PICTURES_TOOL " " PICTURES_FONTS " /tmp/description bmp /tmp/drawn 2>&1 || true",
                  "");
}

TEST(pictures, says_which_line_cannot_be_followed) {
    const std::string start = "font DejaVuSans.ttf\npicture one 40 20 black\n";
    const struct {
        const char *line, *complaint;
    } cases[] = {
        {"circle 1 1 1 white", "\"circle\" is no element"},
        {"box 1 1 1", "something is missing at the end"},
        {"box 0 0 1 1 0 white white", "more than \"box\" takes"},
        {"box 0 0 1 1 0 grey", "\"grey\" is no colour"},
        {"text middle 20 10 10 white x", "\"middle\" is no place of a text"},
        {"text centre 20 10 20 white Wide text", "does not lie wholly inside"},
        {"text bottom-right 41 20 10 white x", "does not lie wholly inside"},
        {"text top 20 0 10 white \x01", "the font lacks a character"},
        {"font None.ttf\ntext top 20 0 10 white x", "cannot read the font"},
    };
    for (const auto &[line, complaint] : cases) {
        const std::string said = draw(start + line + "\n");
        EXPECT_TRUE(said.starts_with("renewer-pictures: /tmp/description:")) << said;
        EXPECT_NE(said.find(complaint), std::string::npos) << said;
        EXPECT_FALSE(std::filesystem::exists("/tmp/drawn/one.bmp"));
    }
    EXPECT_EQ(draw(start + "text centre 20 10 10 white fits\n"), "") << "the control";
    EXPECT_TRUE(std::filesystem::exists("/tmp/drawn/one.bmp"));
}

TEST(pictures, draws_to_the_pixel) {
    EXPECT_EQ(draw("# A comment\n\npicture p%d 3 2 #102030 2\nbox 1 0 2 1 0 #ff0000\n"
                   "line 0.5 1.5 0.5 1.5 1 white\n"),
              "");
    const std::string ground = "\x10\x20\x30", red = {'\xFF', '\0', '\0'}, white = "\xFF\xFF\xFF";
    for (const char *path : {"/tmp/drawn/p0.bmp", "/tmp/drawn/p1.bmp"}) {
        EXPECT_EQ(netpbm("bmptopnm -quiet", get_file(path)),
                  ppm_of(3, 2, ground + red + red + white + ground + ground));
    }
}

} // namespace
