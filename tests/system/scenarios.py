"""Whole updates on the unit's own kind of kernel, and what each must look like from outside.

runs   the command lines that the updater handed to the shell, in order
shows  "<seconds> <what the user saw>": pictures on the screen; lit LEDs on the front panel (S static,
       G GPS, T data sent, R data received, C charge, P power). What alternates is one entry.
spans  "<seconds> <part of a line of the time line> > <part of a later one>"
log    what the update's log holds
leaves the files that are new or changed, and the file of before that they are a copy of
ends   how the machine ended, and with what status the program
"""

from unit import external_count, battery_count

STICK = "/media/sda1/update"
APPLICATION = ["killall S080_application", "/etc/init.d/S080_application stop"]
LCD_ON = [
    "echo 255 > /sys/class/leds/Oled_Power/brightness",
    "echo 255 > /sys/class/leds/Oled_Rst/brightness",
    "echo 0   > /sys/class/leds/Oled_Rst/brightness",
    "echo 255 > /sys/class/leds/Oled_Rst/brightness",
]
COPY = ["sync", "sync", "cp -drf /firmware/update/* /firmware/", "sync"]
SCRIPT = ["/firmware/install.sh 1>/data/app/log/update.log 2>&1"]
SELF_COPY = [
    "mkdir -p /data/sbin/update",
    "cp /firmware/renewer.bin /data/sbin/update/renewer",
    "cp /firmware/renewer.bin /data/sbin/renewer",
    "sync",
]
FLAG, OVER = ["touch /tmp/update_flag"], ["touch /tmp/update_over", "sync"]
SUCCESS = FLAG + ["echo update_success >> /data/app/log/update.log"]
END = OVER + [
    "echo rm_file_success >> /data/app/log/update.log",
    "echo check_update_over >> /data/app/log/update.log",
]
REMOVAL = ["rm -rf /firmware/update"]
REBOOT = ["/etc/init.d/rc.stop", "/etc/init.d/umount_all", "sync", "reboot"]
INSTALLED = COPY + SCRIPT + SELF_COPY + SUCCESS + END + REBOOT

LOG = "installing\ninstalled\nupdate_success\nrm_file_success\ncheck_update_over\n"
COPIED = [
    "/data/app/log/update.log",
    "/firmware/install.sh = /firmware/update/install.sh",
    "/firmware/renewer.bin = /firmware/update/renewer.bin",
    "/tmp/update_flag",
]
RENEWED = [
    "/data/sbin/renewer = /firmware/update/renewer.bin",
    "/data/sbin/update/renewer = /firmware/update/renewer.bin",
]
REMOVED = ["/firmware/update/install.sh is gone", "/firmware/update/renewer.bin is gone"]
DONE = dict(log=LOG, leaves=sorted(COPIED + RENEWED), ends="reboot, status 1")
REFUSED = dict(leaves=[], ends="power off, status 0")
CANCELLED = dict(leaves=["/tmp/update_over"], ends="power off, status 0")

FLASHES = ["2 x 1.0 SGTP, 1.0 S", "1.0 SGTP"]

SCENARIOS = {
    "led_confirmed": dict(
        model="13",
        arguments=f"1 {STICK} 34",
        story=[(1500, "led Light_Gps 1", "press 2")],
        runs=APPLICATION + INSTALLED,
        **DONE,
        shows=["3 x 0.3 S, 0.3 SGTRCP", "10 x 0.5 SC, 0.5 SP", "3.0 SCP", "3.1 S"],
    ),
    "led_declined": dict(
        model="13",
        arguments=f"1 {STICK} 34",
        runs=APPLICATION + OVER,
        **CANCELLED,
        story=[(1000, "led Light_Gps 1", "press 3"), (2000, "led Light_Gps 1", "press 3")],
        shows=["4 x 0.3 S, 0.3 SGTRCP"] + FLASHES + ["5.0 S"],
    ),
    "led_silent": dict(
        model="13",
        arguments=f"2 {STICK} 12",
        runs=APPLICATION + OVER,
        **CANCELLED,
        shows=["50 x 0.3 S, 0.3 SGTRCP"]
        + 2 * ["0.3 S", "0.6 SGTRCP", "49 x 0.3 S, 0.3 SGTRCP"]
        + ["0.3 S", "0.6 SGTRCP", "47 x 0.3 S, 0.3 SGTRCP", "0.3 S"]
        + FLASHES
        + ["5.0 S"],
    ),
    "led_script_hangs": dict(
        model="13",
        arguments="0 /firmware/update 13",
        tree={
            "/firmware/update/install.sh": "#!/bin/sh\necho begun\nwhile :; do sleep 0.1; done\n"
        },
        runs=APPLICATION
        + COPY
        + 2 * (SCRIPT + ["killall install.sh"])
        + FLAG
        + REMOVAL
        + OVER
        + REBOOT,
        shows=["120 x 0.5 SC, 0.5 SP"] + FLASHES + ["7.0 S"],
        log="begun\n",
        leaves=sorted(COPIED + REMOVED),
        ends="reboot, status 1",
        spans=["60.0 sh -c /firmware/install.sh > sh -c killall install.sh"],
    ),
    "led_other_part_number": dict(
        model="13", arguments=f"1 {STICK} 35", runs=OVER, shows=[], **REFUSED
    ),
    "led_path_refused": dict(
        model="13", arguments="1 /mnt/update 34", runs=OVER, shows=[], **REFUSED
    ),
    "lcd_confirmed": dict(
        model="16",
        arguments=f"1 {STICK} 34",
        prompt_pictures=True,
        program="/usr/sbin/renewer",
        story=[(1500, "screen picture 0", "press 2")],
        runs=APPLICATION + LCD_ON + INSTALLED,
        shows=["1.5 confirm"] + [f"1.0 updating_{i}" for i in range(10)] + ["3.1 success"],
        **DONE,
    ),
    "lcd_declined": dict(
        model="16",
        arguments=f"1 {STICK} 34",
        runs=APPLICATION + LCD_ON + OVER,
        story=[(1500, "screen picture 0", "press 7")],
        shows=["1.5 update_now_bmp", "5.0 update_failed_bmp"],
        **CANCELLED,
    ),
    "lcd_silent": dict(
        model="16",
        arguments=f"7 {STICK}",
        runs=APPLICATION + LCD_ON + OVER,
        shows=["120.0 update_now_bmp", "5.0 update_failed_bmp"],
        **CANCELLED,
    ),
    "lcd_script_fails_once": dict(
        model="16",
        arguments="0 /firmware/update 16",
        tree={
            "/firmware/update/install.sh": "#!/bin/sh\necho installing\n[ -e /tmp/tried ] || { touch /tmp/tried; exit 3; }\n"
            "echo installed\n"
        },
        runs=APPLICATION
        + LCD_ON
        + COPY
        + 2 * SCRIPT
        + SELF_COPY
        + SUCCESS
        + REMOVAL
        + END
        + REBOOT,
        shows=["9.0 updating_bmp", "3.1 update_success_bmp"],
        log=LOG,
        leaves=sorted(COPIED + RENEWED + REMOVED + ["/tmp/tried"]),
        ends="reboot, status 1",
    ),
    "lcd_weak_battery": dict(
        model="16",
        arguments=f"1 {STICK} 34",
        runs=APPLICATION + LCD_ON + ["sync"] + OVER,
        tree={"in_voltage1_raw": battery_count(6.84), "in_voltage2_raw": external_count(0)},
        shows=["7.0 update_failed_bmp"],
        **REFUSED,
    ),
}
