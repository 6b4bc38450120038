#include "prompt/prompt_led_corvus.h"

#include "platform/debug.h"
#include "prompt/led.h"
#include "prompt/led_confirm.h"
#include "prompt/led_pattern.h"
#include "prompt/mw_key.h"
#include "prompt/running_thread.h"
#include "unit/host_info.h"

#include <atomic>
#include <cstdio>
#include <unistd.h>

namespace renewer {

namespace {

constexpr useconds_t blink_us = 500'000;
constexpr int last_blink_step = 99;
constexpr useconds_t running_light_us = 200'000;
// 300 and 0 show the same LED, so it stays lit for two steps when the count starts again.
constexpr size_t last_running_step = 300;
constexpr unsigned success_s = 3;
constexpr int failure_flashes = 3;
constexpr unsigned failure_flash_s = 1; // on, and again off
constexpr unsigned failure_pause_s = 3; // after the last

int s_led_init_status = 0;
int g_key_fd = -1;
std::atomic<int> s_led_thread_run = 0; // not 0: there is a thread to be joined
pthread_t thr_led;

constexpr std::array<led_state, 2> charge_phase = {{{light_charge, true}, {light_power, false}}};
constexpr std::array<led_state, 2> power_phase = {{{light_charge, false}, {light_power, true}}};
constexpr std::array<led_state, 2> both_off = {{{light_charge, false}, {light_power, false}}};
constexpr std::array<led_state, 2> both_on = {{{light_charge, true}, {light_power, true}}};

constexpr std::array<led_state, 4> result_on = {{
    {light_static_data, true},
    {light_gps, true},
    {light_data_se, true},
    {light_power, true},
}};
constexpr std::array<led_state, 3> result_off = {{
    {light_gps, false},
    {light_data_se, false},
    {light_power, false},
}};

// The one of the five that is lit at each step of the light that runs along the panel; none at the
// first, where Light_Static_Data is switched on.
constexpr std::array<const char *, 4> running_light = {nullptr, light_gps, light_data_se,
                                                       light_power};

void show_running_light(const char *lit) {
    if (lit == nullptr) {
        led_on_by_name(light_static_data);
    }
    for (led_state led : five_off) {
        led.lit = led.name == lit;
        show_leds({&led, 1});
    }
}

void end_running_indication() {
    end_running_thread(s_led_thread_run, thr_led);
}

int flash_result() {
    end_running_indication();
    show_leds(five_off);
    for (int flash = 0; flash < failure_flashes; ++flash) {
        show_leds(result_on);
        sleep(failure_flash_s);
        show_leds(result_off);
        sleep(failure_flash_s);
    }
    sleep(failure_pause_s);
    return 1;
}

bool has_charge_pattern(const host_info &host) {
    // The GNSS boards 56 to 59.
    const char pn5 = host.pn[5];
    return host.pn[4] == '5' && pn5 >= '6' && pn5 <= '9';
}

} // namespace

const prompt_funs s_prompt_led_corvus = {
    init_screen_corvus,
    uninit_screen_corvus,
    prompt_confirm_screen_corvus,
    prompt_success_screen_corvus,
    prompt_updating_screen_corvus,
    prompt_failure_screen_corvus,
    prompt_notallow_screen_corvus,
};

int init_screen_corvus() {
    if (s_led_init_status != 1) {
        g_key_fd = key_open(1);
        if (g_key_fd < 0) {
            // Without keys the question goes unanswered, but the LEDs still show what happens.
            debug(0, "key fd < 0\n");
        }
        s_led_init_status = 1;
    }
    led_on_by_name(light_static_data);
    return 1;
}

int uninit_screen_corvus() {
    if (s_led_init_status == 1) {
        key_close(g_key_fd);
        g_key_fd = -1;
        s_led_init_status = 0;
    }
    return 1;
}

int prompt_confirm_screen_corvus() {
    host_info host;
    if (!read_host_or_report(host)) {
        return 0;
    }
    debug(5, "prompt_confirm_led_sula\n");
    led_on_by_name(light_static_data);
    show_leds(five_off);
    return wait_for_confirmation(g_key_fd);
}

int prompt_updating_screen_corvus() {
    debug(5, "prompt_updating_led_corvus\n");
    end_running_indication();
    host_info host;
    if (!read_host_or_report(host)) {
        return 0;
    }
    puts("################update coming!#####################");
    if (const int error = start_running_thread(s_led_thread_run, thr_led, led_thread_fun_corvus_bd);
        error != 0) {
        report_unstarted_thread(error);
    }
    return 1;
}

int prompt_success_screen_corvus() {
    debug(5, "prompt_success_led\n");
    end_running_indication();
    host_info host;
    if (!read_host_or_report(host)) {
        return 0;
    }
    show_leds(five_off);
    if (has_charge_pattern(host)) {
        show_leds(both_on);
    } else {
        show_leds(result_on);
    }
    sleep(success_s);
    show_leds(five_off);
    return 1;
}

int prompt_failure_screen_corvus() {
    debug(5, "prompt_failure_led_corvus\n");
    return flash_result();
}

int prompt_notallow_screen_corvus() {
    debug(5, "prompt_notallow_led_corvus\n");
    return flash_result();
}

void *led_thread_fun_corvus_bd(void *) {
    show_leds(five_off);
    for (int step = 0; s_led_thread_run != 0; step = step == last_blink_step ? 0 : step + 1) {
        show_leds(step % 2 == 0 ? charge_phase : power_phase);
        usleep(blink_us);
    }
    show_leds(both_off);
    return nullptr;
}

void *led_thread_fun_corvus(void *) {
    show_leds(five_off);
    for (size_t step = 0; s_led_thread_run != 0; step = step == last_running_step ? 0 : step + 1) {
        show_running_light(running_light[step % running_light.size()]);
        usleep(running_light_us);
    }
    show_leds(five_off);
    return nullptr;
}

int get_key_code(int fd) {
    key_event event = {};
    if (read(fd, &event, sizeof(event)) <= 0) {
        return -1;
    }
    if (event.code == 0) {
        return 0;
    }
    return event.value == 0 ? event.code + key_released : event.code;
}

} // namespace renewer
