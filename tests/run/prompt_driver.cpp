// Runs prompts one after the other, in place of the update run:
//
//     6                 prompt_user(6), and prints "prompt 6: <result>"
//     pause=2.5         lets 2.5 s pass
//     descriptors=1100  takes descriptors up to that number
//     light=2.5         runs the second pattern beside, until the running indication is ended or
//                       the program has waited 2.5 s for it
#include "prompt/prompt_led_corvus.h"
#include "prompt/prompt_user.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <string_view>
#include <unistd.h>

namespace {

void pause_for(double seconds) {
    usleep(static_cast<useconds_t>(seconds * 1e6));
}

void take_descriptors(int last) {
    while (open("/dev/null", O_RDONLY | O_CLOEXEC) < last) {
    }
}

void run_light(double seconds) {
    pthread_t light;
    pthread_create(&light, nullptr, renewer::led_thread_fun_corvus, nullptr);
    pthread_detach(light);
    pause_for(seconds);
}

void run_step(std::string_view step) {
    const size_t sign = step.find('=');
    const std::string_view name = step.substr(0, sign);
    const double value = sign == step.npos ? 0 : atof(step.data() + sign + 1);
    if (name == "pause") {
        pause_for(value);
    } else if (name == "descriptors") {
        take_descriptors(static_cast<int>(value));
    } else if (name == "light") {
        run_light(value);
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
