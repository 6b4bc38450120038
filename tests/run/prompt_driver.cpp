// Runs prompts one after the other, in place of the update run:
//
//     6                 prompt_user(6), and prints "prompt 6: <result>"
//     until=/tmp/x      waits until there is such a file
//     descriptors=1100  opens descriptors up to that number
//     light             runs the second pattern in a thread until the running indication ends
#include "prompt/prompt_led_corvus.h"
#include "prompt/prompt_user.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <string_view>
#include <unistd.h>

namespace {

void wait_for(const char *path) {
    while (access(path, F_OK) != 0) {
        usleep(100'000);
    }
}

void take_descriptors(int last) {
    while (open("/dev/null", O_RDONLY | O_CLOEXEC) < last) {
    }
}

void run_light() {
    pthread_t light;
    pthread_create(&light, nullptr, renewer::led_thread_fun_corvus, nullptr);
    pthread_detach(light);
}

void run_step(std::string_view step) {
    if (step.starts_with("until=")) {
        wait_for(step.data() + strlen("until="));
    } else if (step.starts_with("descriptors=")) {
        take_descriptors(atoi(step.data() + strlen("descriptors=")));
    } else if (step == "light") {
        run_light();
    } else {
        const int number = atoi(step.data());
        printf("prompt %d: %d\n", number, renewer::prompt_user(number));
    }
}

} // namespace

int main(int argc, char **argv) {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    for (int i = 1; i < argc; ++i) {
        run_step(argv[i]);
    }
    return 0;
}
