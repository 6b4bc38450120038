#include "simulator/unit/unit.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

constexpr auto what_is_ordered = {event_kind::out,  event_kind::err,   event_kind::shell,
                                  event_kind::call, event_kind::alarm, event_kind::exit};

// Removes what other processes do in their own time: the application's end, the script's start
// (its place beside the alarm's) and the polls for the marker beyond the first, whose number
// depends on the speed of this machine.
std::string without_chance(std::string transcript) {
    const std::string poll = "shell echo check_update_over >> /data/app/log/update.log\n";
    for (size_t twice; (twice = transcript.find(poll + poll)) != std::string::npos;) {
        transcript.erase(twice, poll.size());
    }
    const std::string script = "shell /firmware/install.sh 1>/data/app/log/update.log 2>&1\n";
    const std::string alarm = "alarm 4294967295 s\n";
    if (const size_t place = transcript.find(script + alarm); place != std::string::npos) {
        transcript.replace(place, script.size() + alarm.size(), alarm + script);
    }
    const std::string ended = "call S080_application ended\n";
    if (const size_t place = transcript.find(ended); place != std::string::npos) {
        transcript.erase(place, ended.size());
    }
    return transcript;
}

TEST(update_run, confirmed_by_ok_installs_and_reboots) {
    const outcome end = unit()
                            .model("13")
                            .press(key::ok, after("led Light_Gps 255", 1s))
                            .acknowledge_end(500ms)
                            .run({"1", "/media/sda1/update", "34"});

    EXPECT_TRUE(end.has("call S080_application ended"));
    EXPECT_EQ(without_chance(end.transcript(what_is_ordered)),
              "out gnss pack!\n"
              "out gnss 6,7 PN fit!\n"
              "shell killall S080_application\n"
              "shell /etc/init.d/S080_application stop\n"
              "call S080_application stop\n"
              "out coming................\n"
              "out get a key\n"
              "out @2  1 1001\n"
              "out get the code is :2.\n"
              "out ok_down_t->time:1001s\n"
              "out ################update coming!#####################\n"
              "shell sync\n"
              "shell sync\n"
              "shell cp -drf /firmware/update/* /firmware/\n"
              "out wait -1 sec...\n"
              "shell sync\n"
              "out fork_exec: /firmware/install.sh 1>/data/app/log/update.log 2>&1\n"
              "alarm 4294967295 s\n"
              "shell /firmware/install.sh 1>/data/app/log/update.log 2>&1\n"
              "alarm 0 s\n"
              "out status 0\n"
              "shell mkdir -p /data/sbin/update\n"
              "shell cp /firmware/renewer.bin /data/sbin/update/renewer\n"
              "shell cp /firmware/renewer.bin /data/sbin/renewer\n"
              "shell sync\n"
              "shell touch /tmp/update_flag\n"
              "shell echo update_success >> /data/app/log/update.log\n"
              "shell touch /tmp/update_over\n"
              "shell sync\n"
              "shell echo rm_file_success >> /data/app/log/update.log\n"
              "shell echo check_update_over >> /data/app/log/update.log\n"
              "shell /etc/init.d/rc.stop\n"
              "call rc.stop\n"
              "shell /etc/init.d/umount_all\n"
              "call umount_all\n"
              "shell sync\n"
              "shell reboot\n"
              "call reboot\n"
              "exit status 1\n");
}

} // namespace
