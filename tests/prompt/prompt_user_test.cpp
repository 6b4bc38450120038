#include "prompt/prompt_user.h"

#include "tests/support/files.h"
#include "tests/support/printed.h"

#include <climits>
#include <fcntl.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace renewer;

namespace {

const std::filesystem::path host_file = "/update/hw/sys";
const std::filesystem::path static_led = "/sys/class/leds/Light_Static_Data/brightness";

// How often `init` of the LED set has run: it writes three characters each time.
class init_counter {
public:
    init_counter() {
        std::filesystem::create_directories(static_led.parent_path());
        mkfifo(static_led.c_str(), 0600);
        led = open(static_led.c_str(), O_RDWR | O_CLOEXEC);
    }
    ~init_counter() { close(led); }
    int taken() {
        int size = 0;
        ioctl(led, FIONREAD, &size);
        std::string written(static_cast<size_t>(size), '\0');
        EXPECT_EQ(read(led, written.data(), size > 0 ? written.size() : 0), size);
        return size / 3;
    }

private:
    int led;
};

TEST(prompt_user, numbers_and_models) {
    init_counter inits;
    const struct {
        const char *host;
        int number;
        int result;
        int inits;
    } cases[] = {
        {"unit 1 1013563400", PROMPT_INIT, 1, 2},
        {"unit 1 1015", PROMPT_INIT, 0, 0},
        {"unit 1 1031", PROMPT_INIT, 0, 0},
        {"unit 1 1013", 7, 0, 1},
        {"unit 1 1013", 0, 0, 1},
        {"unit 1 1013", INT_MIN, 0, 1},
        {"unit 1 1013", INT_MAX, 0, 1},
        {"unit 1 101", PROMPT_INIT, 0, 0},
        {"1013", PROMPT_INIT, 0, 0},
    };
    EXPECT_EQ(printed([&] {
                  for (const auto &[host, number, result, expected_inits] : cases) {
                      put_file(host_file, host);
                      EXPECT_EQ(prompt_user(number), result) << host << " " << number;
                      EXPECT_EQ(inits.taken(), expected_inits) << host << " " << number;
                  }
              }),
              "key fd < 0\n"); // the keys are tried once
    std::filesystem::remove(host_file);
    EXPECT_EQ(
        reply_of([] { return prompt_user(PROMPT_INIT); }),
        (reply{0, "", "open sys err: No such file or directory\nget_local_host_info() failure\n"}));
    EXPECT_EQ(inits.taken(), 0);
}

} // namespace
