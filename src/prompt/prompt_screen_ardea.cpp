#include "prompt/prompt_screen_ardea.h"

#include "lcd/sa1230_device.h"
#include "platform/debug.h"
#include "prompt/key_wait.h"
#include "prompt/mw_key.h"
#include "prompt/running_thread.h"

#include <atomic>
#include <cstdio>
#include <unistd.h>

namespace renewer {

namespace {

constexpr const char lcd_device[] = "/dev/spidev1.0";

// A picture file (see `sa1230_update`) and the built-in picture (see `sa1230_default`) for it.
struct prompt_picture {
    int file;
    unsigned built_in;
};
constexpr prompt_picture confirm_picture = {131, 1};
constexpr prompt_picture success_picture = {132, 2};
constexpr prompt_picture failure_picture = {133, 3};
constexpr prompt_picture notallow_picture = {134, 3};

constexpr int last_frame = 128;
constexpr unsigned built_in_updating = 0;

constexpr int answer_s = 120;
constexpr unsigned frame_s = 1;
constexpr unsigned refusal_s = 4; // how long the refusal is shown at least

int s_lcd_init_status = 0;
int g_key_fd = -1;
int spi_fd = -1;
std::atomic<int> s_lcd_thread_run = 0; // not 0: there is a thread to be joined
pthread_t thr_lcd;

void show(const prompt_picture &picture) {
    if (sa1230_update(spi_fd, picture.file) != 0) {
        sa1230_default(spi_fd, picture.built_in);
    }
}

int show_result(const prompt_picture &picture) {
    end_running_thread(s_lcd_thread_run, thr_lcd);
    show(picture);
    // A result is the last picture of a run. The LCD stays initialised, so nothing opens it again.
    if (spi_fd >= 0) {
        close(spi_fd);
        spi_fd = -1;
    }
    return 1;
}

void open_keys() {
    // Left open by an initialisation that then failed at the LCD.
    if (g_key_fd >= 0) {
        key_close(g_key_fd);
    }
    g_key_fd = key_open(1);
    if (g_key_fd < 0) {
        debug(0, "key fd < 0\n");
    }
}

bool open_lcd() {
    if (spi_fd < 0) {
        spi_fd = sa1230_open(lcd_device);
    }
    return spi_fd >= 0;
}

} // namespace

const prompt_funs s_prompt_screen_ardea = {
    init_screen_ardea,
    uninit_screen_ardea,
    prompt_confirm_screen_ardea,
    prompt_success_screen_ardea,
    prompt_updating_screen_ardea,
    prompt_failure_screen_ardea,
    prompt_notallow_screen_ardea,
};

int init_screen_ardea() {
    if (s_lcd_init_status == 1) {
        return 1;
    }
    open_keys();
    if (!open_lcd()) {
        puts("open err");
        return -1;
    }
    s_lcd_init_status = 1;
    return 1;
}

int uninit_screen_ardea() {
    if (s_lcd_init_status == 1) {
        key_close(g_key_fd);
        g_key_fd = -1;
        s_lcd_init_status = 0;
    }
    return 1;
}

int prompt_confirm_screen_ardea() {
    debug(5, "prompt_confirm_screen_ardea\n");
    show(confirm_picture);
    timeval time_out = {answer_s, 0};
    if (wait_for_key(g_key_fd, &time_out) <= 0) {
        return 0;
    }
    unsigned duration = 0;
    const int key = key_get(g_key_fd, &duration);
    printf("key %d enter\n", key);
    return key == key_ok ? 1 : 0;
}

int prompt_updating_screen_ardea() {
    debug(5, "prompt_updating_screen_ardea\n");
    const int error = start_running_thread(s_lcd_thread_run, thr_lcd, lcd_thread_fun_ardea);
    printf("updating111%d\n", error);
    if (error != 0) {
        report_unstarted_thread(error);
    }
    return 1;
}

int prompt_success_screen_ardea() {
    debug(5, "prompt_success_screen_ardea\n");
    if (s_lcd_thread_run != 0) {
        debug(5, "start join thr\n");
    }
    return show_result(success_picture);
}

int prompt_failure_screen_ardea() {
    debug(5, "prompt_failure_screen_ardea\n");
    return show_result(failure_picture);
}

int prompt_notallow_screen_ardea() {
    debug(5, "prompt_notallow_screen_ardea\n");
    show_result(notallow_picture);
    sleep(refusal_s);
    return 1;
}

void *lcd_thread_fun_ardea(void *) {
    int frame = 0;
    while (s_lcd_thread_run != 0) {
        const int shown = sa1230_update(spi_fd, frame);
        debug(5, "updating=%d,s_lcd_thread_run = %d,ret = %d\n", frame, s_lcd_thread_run.load(),
              shown);
        sleep(frame_s);
        if (frame == last_frame) {
            frame = 0;
        }
        // Either the first picture is missing, and so the whole animation, or the last one, behind
        // which the animation would begin again. Any other missing picture just restarts the
        // animation.
        if (shown < 0 && frame == 0) {
            sa1230_default(spi_fd, built_in_updating);
            debug(5, "updating default!\n");
            break;
        }
        frame = shown < 0 ? 0 : frame + 1;
    }
    return nullptr;
}

} // namespace renewer
