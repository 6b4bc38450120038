#include "platform/shell.h"

#include "simulator/in_process/asked.h"
#include "tests/support/files.h"
#include "tests/support/printed.h"
#include "tests/support/scarce_memory.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

using namespace renewer;

namespace {

TEST(shell, shell_that_cannot_be_started_is_retried_but_no_missing_command) {
    constexpr int not_found = 127 << 8;
    struct {
        int fail;
        int reported;
        int reason;
        int tried;
        int result;
    } const cases[] = {
        {0, 0, 0, 1, 3 << 8},
        {4, -1, EAGAIN, 5, 3 << 8},
        {9, -1, ENOMEM, 5, -1},
        {4, not_found, ENOMEM, 5, 3 << 8},
        {9, not_found, EAGAIN, 5, -1},
        {1, not_found, 0, 1, not_found},
        {1, not_found, ENOENT, 1, not_found},
    };
    for (const auto &[fail, status, error, tried, result] : cases) {
        let_shells_fail(fail, status, error);
        asked().transcript.clear();
        EXPECT_EQ(shell("exit 3"), result) << fail << " " << error;
        std::string asked_for = "shell exit 3\n";
        for (int again = 1; again < tried; ++again) {
            asked_for += "sleep 1 s\nshell exit 3\n";
        }
        EXPECT_EQ(asked().transcript, asked_for) << fail << " " << error;
        let_shells_fail(0, 0, 0);
    }
}

TEST(shell, without_memory_for_the_line_nothing_is_run) {
    for (const char *argument : {"/tmp/made", "/tmp/made too"}) {
        for (const int allocations : {0, 1}) {
            allocations_left = allocations;
            EXPECT_EQ(shell_with_argument("touch", argument), -1);
            allocations_left = INT_MAX;
            EXPECT_FALSE(std::filesystem::exists(argument));
        }
        EXPECT_EQ(shell_with_argument("touch", argument), 0);
        EXPECT_TRUE(std::filesystem::exists(argument));
    }
}

TEST(shell, every_byte_passes_unchanged_at_the_start_and_within_a_word) {
    std::string line = "printf > /tmp/printed '%s\\0'";
    std::string expected;
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text = {static_cast<char>(byte), 'x', static_cast<char>(byte), 'x'};
        line += std::string(" ") + shell_word(text.c_str()).get();
        expected += text + '\0';
    }
    EXPECT_EQ(shell(line.c_str()), 0);
    EXPECT_EQ(get_file("/tmp/printed"), expected);
}

TEST(shell, plain_words_stay_unquoted_and_others_are_quoted) {
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

TEST(shell, argument_reaches_the_command_unchanged) {
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

TEST(shell, argument_like_an_option_follows_the_end_of_options) {
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
    EXPECT_EQ(printed([] {
                  printf("first, ");
                  EXPECT_EQ(shell("echo second"), 0);
                  printf("third\n");
              }),
              "first, second\nthird\n");
}

TEST(shell, returns_the_status_of_the_command) {
    EXPECT_EQ(shell("exit 3"), 3 << 8);
    EXPECT_EQ(shell("kill -9 $$"), 9);
}

} // namespace
