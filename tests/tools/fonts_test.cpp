#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

// The host tool that makes the glyph tables, run as the build runs it.

namespace {

const std::string good_lists = get_file(FONT_LISTS);

// A directory of this process's own.
const std::filesystem::path scratch = [] {
    std::string name = testing::TempDir() + "fonts_XXXXXX";
    return std::filesystem::path(mkdtemp(name.data()));
}();

struct cleanup : testing::Environment {
    void TearDown() override { std::filesystem::remove_all(scratch); }
};
[[maybe_unused]] testing::Environment *const clean = testing::AddGlobalTestEnvironment(new cleanup);

struct answer {
    int status;
    std::string said;
};

answer run(const std::string &arguments) {
    const std::string line =
        "cd " + scratch.string() + " && " + FONTS_TOOL + " " + arguments + " 2>said";
    const int status = std::system(line.c_str());
    return {WEXITSTATUS(status), get_file(scratch / "said")};
}

std::string with(std::string text, const std::string &before, const std::string &after) {
    const size_t at = text.find(before);
    EXPECT_NE(at, std::string::npos) << before;
    return text.replace(at, before.size(), after);
}

TEST(fonts, refuses_lists_that_do_not_fill_the_tables) {
    const struct {
        std::string lists;
        const char *message;
    } cases[] = {
        {with(good_lists, "卫星", "卫卫"), "ideographs: 195 characters instead of 196"},
        {with(good_lists, "卫星", "卫星龙"), "ideographs: 197 characters instead of 196"},
        {with(good_lists, "卫星", "卫Ж"), "Ж is no ideograph that a text may hold"},
        {with(good_lists, "星 电", "星 龙"), "龙 repeats nothing"},
        {with(good_lists, "星 电", "星"), "repeats: 1 characters instead of 2"},
        {with(good_lists, "█", ""), "symbols: 31 characters instead of 32"},
        {with(good_lists, "█", "✓"), "a glyph is too wide for its cell"},
        {with(good_lists, "█", "\xEE\x80\x80"), "the font has no glyph for \xEE\x80\x80"},
        {with(good_lists, "█", "\xE2\x96"), "not UTF-8"},
        {with(good_lists, "latin ", "letters "), "cannot follow \"letters "},
    };
    for (const auto &[lists, message] : cases) {
        put_file(scratch / "lists.txt", lists);
        const answer given = run(std::string("lists.txt source ") + HEX_FONT + " header.h out.cpp");
        EXPECT_EQ(given.status, 1) << message;
        EXPECT_NE(given.said.find(message), std::string::npos) << given.said;
    }
    const answer given = run(std::string(FONT_LISTS) + " source " + HEX_FONT + " header.h out.cpp");
    EXPECT_EQ(given.status, 0) << given.said;
    EXPECT_NE(get_file(scratch / "out.cpp").find("#include \"header.h\""), std::string::npos);
}

TEST(fonts, names_each_character_that_the_tables_lack) {
    put_file(scratch / "texts.h", "// 龙 is only talked of\n"
                                  "const char *a = \"卫星 ok\"; // and \"龙\"\n"
                                  "const char *b = \"卫龙\" \"é\\\"Ж\", c = '\"';\n"
                                  "const char *d = \"\";\n");
    const answer given = run(std::string(FONT_LISTS) + " check texts.h");
    EXPECT_EQ(given.status, 1);
    EXPECT_EQ(given.said, "texts.h:3: no glyph for 龙 (U+9F99)\n"
                          "texts.h:3: no glyph for é (U+00E9)\n"
                          "texts.h:3: no glyph for Ж (U+0416)\n");
    put_file(scratch / "texts.h", "const char *a = \"卫星 ok\";\n");
    EXPECT_EQ(run(std::string(FONT_LISTS) + " check texts.h").status, 0);
    EXPECT_EQ(run(std::string(FONT_LISTS) + " check none.h").said,
              "renewer-fonts: cannot read none.h\n");
}

} // namespace
