"""A unit's file tree for the machine, and its story (see story.h)."""

import os

from machine import Archive

INSTALL_SCRIPT = "#!/bin/sh\necho installing\necho installed\n"
ADC = "/unit/sys/bus/iio/devices/iio:device0"


def battery_count(volts):
    """The converter's raw count for a voltage of the whole battery."""
    return f"{round(volts * 1023 / (5.255 * 1.8))}\n"


def external_count(volts):
    return f"{max(0, round((volts * 1000 - 339) / 40.84))}\n"


def usual_tree(model, program):
    """The files of a unit of a model ("13": LEDs, "16": screen), by path. The update brings a newer
    copy of the program, which behaves the same."""
    with open(program, "rb") as file:
        updater = file.read()
    tree = {
        "/update/hw/sys": f"unit 1 10{model}563400120000\0",
        "/data/sbin/renewer": updater,
        "/usr/sbin/renewer": updater,
        "/firmware/update/renewer.bin": updater + b"the copy that came with the update\n",
        "/firmware/update/install.sh": INSTALL_SCRIPT,
        f"{ADC}/in_voltage1_raw": battery_count(8.2),
        f"{ADC}/in_voltage2_raw": external_count(12),
        f"{ADC}/in_voltage3_raw": "0\n",
        "/unit/sys/kernel/debug/ffd00000.dwc3/mode": "device\n",
    }
    for script in ["S080_application", "rc.stop", "umount_all"]:
        tree[f"/etc/init.d/{script}"] = "#!/bin/sh\n"
    return tree


def story(command, actions):
    """`actions`: (milliseconds, part of a line, action)."""
    return f"start\t{command}\n" + "".join(
        f"after\t{delay}\t{line}\t{action}\n" for delay, line, action in actions
    )


def archive_of(tree):
    """The tree as an archive. For a path with content None only its directory is made."""
    archive = Archive()
    made = set()
    for path, content in tree.items():
        folder = os.path.dirname(path)
        parents = [folder]
        while os.path.dirname(parents[-1]) != "/":
            parents.append(os.path.dirname(parents[-1]))
        for parent in reversed(parents):
            if parent not in made:
                archive.directory(parent)
                made.add(parent)
        if content is not None:
            archive.file(path, content, 0o755)
    return archive
