#include "update/timed_command.h"

#include "tests/support/files.h"
#include "tests/support/printed.h"

#include <cerrno>
#include <chrono>
#include <dlfcn.h>
#include <filesystem>
#include <poll.h>
#include <string>
#include <sys/mount.h>
#include <unistd.h>

using namespace renewer;

namespace {

bool no_processes_left = false;

} // namespace

// The program's own calls find this one before the C library's.
extern "C" pid_t fork() {
    if (no_processes_left) {
        errno = EAGAIN;
        return -1;
    }
    return reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "fork"))();
}

namespace {

constexpr unsigned no_limit = static_cast<unsigned>(-1);

TEST(timed_command, at_least_one_attempt_and_no_more_than_asked_for) {
    struct {
        int tries;
        const char *command;
        int result;
        const char *runs; // one character an attempt
    } const cases[] = {
        {0, "printf x >> /tmp/runs; exit 3", 3 << 8, "x"},
        {-5, "printf x >> /tmp/runs; exit 3", 3 << 8, "x"},
        {1, "printf x >> /tmp/runs; exit 255", 255 << 8, "x"},
        {3, "printf x >> /tmp/runs; exit 1", 1 << 8, "xxx"},
        {3, "printf x >> /tmp/runs; test $(cat /tmp/runs) = xx", 0, "xx"},
        {3, "printf x >> /tmp/runs", 0, "x"},
        {1, "printf x >> /tmp/runs; kill -9 $$", 137 << 8, "x"},
        {1, "printf x >> /tmp/runs; kill -9 $PPID; sleep 1", 1, "x"},
    };
    for (const auto &[tries, command, result, runs] : cases) {
        std::filesystem::remove("/tmp/runs");
        EXPECT_EQ(fork_exec_timeout(command, "none", no_limit, tries), result) << command;
        EXPECT_EQ(get_file("/tmp/runs"), runs) << command;
    }
}

TEST(timed_command, child_that_cannot_be_made_is_reported_and_not_retried) {
    no_processes_left = true;
    EXPECT_EQ(reply_of([] { return fork_exec_timeout("true", "none", 60, 2); }),
              (reply{1, "fork_exec: true\n", "fork failed: Resource temporarily unavailable\n"}));
}

TEST(timed_command, command_that_reads_its_input_finds_none) {
    put_file("/tmp/answers", "answer\n");
    ASSERT_NE(freopen("/tmp/answers", "r", stdin), nullptr);
    EXPECT_EQ(fork_exec_timeout("read answer", "none", no_limit, 1), 1 << 8);
}

TEST(timed_command, what_a_failed_attempt_leaves_is_waited_for_if_it_is_visible) {
    std::filesystem::copy_file("/bin/sleep", "/tmp/a) S 1");
    const struct {
        const char *command;
        bool seen;
        int ends_after_ms;
    } cases[] = {{"'/tmp/a) S 1' 0.3 & exit 3", true, 0}, {"sleep 100 & exit 3", false, 10'000}};
    for (const auto &[command, seen, ends_after_ms] : cases) {
        int held[2]; // by all that runs
        ASSERT_EQ(pipe(held), 0);
        ASSERT_TRUE(seen || mount("nothing", "/proc", "tmpfs", 0, "") == 0);
        const auto begun = std::chrono::steady_clock::now();
        EXPECT_EQ(fork_exec_timeout(command, "none", no_limit, 1), 3 << 8);
        EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(10));
        EXPECT_TRUE(seen || umount("/proc") == 0);
        close(held[1]);
        pollfd all_ended = {held[0], POLLIN, 0};
        EXPECT_EQ(poll(&all_ended, 1, ends_after_ms), 1) << command;
    }
}

TEST(timed_command, buffered_output_is_written_once) {
    EXPECT_EQ(printed([] {
                  printf("unfinished ");
                  fork_exec_timeout("echo shell", "none", no_limit, 1);
              }),
              "unfinished fork_exec: echo shell\nshell\nstatus 0\n");
}

} // namespace
