#include "platform/shell.h"

#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <unistd.h>

using namespace renewer;

namespace {

TEST(shell, ordinary_words_stand_as_they_are_and_others_are_quoted) {
    struct {
        const char *text;
        const char *word;
    } const cases[] = {
        {"/firmware/update", "/firmware/update"},
        {"a-b_c.d+e,f:g@h%i9", "a-b_c.d+e,f:g@h%i9"},
        {"", "''"},
        {"two words", "'two words'"},
        {"~", "'~'"},
        {"it's", "'it'\\''s'"},
        {"'''", "''\\'''\\'''\\'''"},
        {"a\nb", "'a\nb'"},
        {"\xc3\xa4", "'\xc3\xa4'"},
    };
    for (const auto &[text, word] : cases) {
        EXPECT_STREQ(shell_word(text).get(), word);
    }
}

TEST(shell, argument_reaches_the_command_as_it_is) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    put_file("/tmp/print", "#!/bin/sh\nprintf %s \"$1\" > /tmp/printed\n");
    std::filesystem::permissions("/tmp/print", std::filesystem::perms::owner_all);
    for (const std::string &argument :
         {all, std::string("$(touch /tmp/x)"), std::string("*"), std::string(100'000, 'y')}) {
        EXPECT_EQ(shell_with_argument("/tmp/print", argument.c_str()), 0);
        EXPECT_EQ(get_file("/tmp/printed"), argument);
    }
    EXPECT_FALSE(std::filesystem::exists("/tmp/x"));
}

TEST(shell, argument_that_looks_like_an_option_comes_behind_the_end_of_the_options) {
    struct {
        const char *argument;
        const char *arguments;
    } const cases[] = {
        {"/firmware", "[/firmware]"}, {"a-b", "[a-b]"},   {"", "[]"},
        {"-n", "[--][-n]"},           {"--", "[--][--]"}, {"- x", "[--][- x]"},
    };
    for (const auto &[argument, arguments] : cases) {
        EXPECT_EQ(shell_with_argument("printf '[%s]' > /tmp/printed", argument), 0);
        EXPECT_EQ(get_file("/tmp/printed"), arguments);
    }
}

TEST(shell, own_lines_come_before_those_of_the_command) {
    ASSERT_NE(freopen("/tmp/output", "w", stdout), nullptr);
    printf("first, ");
    EXPECT_EQ(shell("echo second"), 0);
    printf("third\n");
    fflush(stdout);
    EXPECT_EQ(get_file("/tmp/output"), "first, second\nthird\n");
}

TEST(shell, gives_the_status_of_the_command) {
    EXPECT_EQ(shell("exit 3"), 3 << 8);
    EXPECT_EQ(shell("kill -9 $$"), 9);
}

} // namespace
