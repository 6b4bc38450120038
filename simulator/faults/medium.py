"""Whole updates on storage whose power is cut at every moment: what a unit would find there."""

import collections
import os
import subprocess
import tempfile

from machine import Machine
from unit import archive_of, story, usual_tree

PARTS = ["data", "firmware", "reserve", "update"]  # the parts of the tree that survive a reboot
INSTALLED, FALLBACK = "/data/sbin/renewer", "/data/sbin/update/renewer"
NAMED = ("/firmware/", "/data/app/log/update.log", INSTALLED, FALLBACK)
INSTALL_SCRIPT = "#!/bin/sh\necho installing\necho done > /firmware/installed\n"
ACKNOWLEDGED = (3000, "runs sh -c touch /tmp/update_over", "remove /tmp/update_over")
# A rest between two changes that is long enough for the first to reach the medium by itself.
REST_S = 6
QUICK_WRITING = "echo 100 > /proc/sys/vm/dirty_expire_centisecs\n"
# The run replaces the file that it was started from by a rename; another one is overwritten by cp,
# which truncates it first.
STARTS = {"the installed copy": INSTALLED, "another copy": "/usr/sbin/renewer"}


def lasting(tree):
    return {path: content for path, content in tree.items() if path.split("/")[1] in PARTS}


class Medium:
    """One kind of storage. `play(name, start, rest)` runs an update and returns what is known of
    the files before it, and for each moment the files by path, or None if they cannot be read."""

    def __init__(self, build, arm_build, modules, own_modules=()):
        self.build, self.arm_build = build, arm_build
        self.machine = Machine(f"{build}/system", arm_build, modules, own_modules)
        self.tree = usual_tree("13", f"{arm_build}/src/update/renewer") | {
            "/firmware/update/install.sh": INSTALL_SCRIPT
        }
        self.old, self.new = self.tree[INSTALLED], self.tree["/firmware/update/renewer.bin"]

    def program(self, path):
        with open(f"{self.arm_build}/{path}", "rb") as file:
            return file.read()

    def run(self, name, tree, start, rest, options=()):
        tree["/usr/sbin/fault_runner"] = self.program("simulator/faults/fault_runner")
        tree["/etc/story"] = story(
            f"env REST={rest} /usr/sbin/fault_runner {STARTS[start]} 5 " "/firmware/update",
            [ACKNOWLEDGED],
        )
        console, files = self.machine.play(name, archive_of(tree), options)
        line = files["/result/time_line"].decode()
        if "exit status 1\n" not in line or "runs sh -c echo update_success" not in line:
            raise RuntimeError(f"the undisturbed run did not end well:\n{console}\n{line}")
        return files


def verdict_on(files, known):
    """Returns "held", "window" or what is wrong with a state. `known`: the files before the run, by
    path, and the old and the new updater; all of them in any form that can be compared."""
    before, old, new = known
    whole = {path: files.get(path) in (old, new) for path in (INSTALLED, FALLBACK)}
    if not any(whole.values()):
        return "no usable copy"
    for path in set(before) | set(files):
        if not path.startswith(NAMED) and before.get(path) != files.get(path):
            return f"{path} is another one"
    return "held" if whole[INSTALLED] else "window"


def sweep(medium, name, program, start, rest):
    """Counts the results of all moments, and lists what did not hold."""
    count, broken, states = collections.Counter(), [], {}
    known, moments = medium.play(f"{name}_{rest}", start, rest)
    for files in moments:
        count["tried"] += 1
        outcome = "cannot be read" if files is None else verdict_on(files, known)
        if outcome == "window" and start == "the installed copy":
            outcome = "installed copy torn"
        count[outcome if outcome in ("held", "window") else "broken"] += 1
        if outcome not in ("held", "window"):
            broken.append(f"{name}, {start}, rest {rest} s: {outcome}")
        else:
            states.setdefault(tuple(sorted(files.items())), files)
    count["states"] = len(states)
    for files in states.values():
        outcome = second_start(medium, files, known, program)
        count["second"] += outcome == "held"
        if outcome != "held":
            broken.append(f"{name}, {start}, rest {rest} s: second start: {outcome}")
    return count, broken


def second_start(medium, files, known, program):
    """Starts the updater on the desk with what was left. The desk's updaters replace the whole
    ones; a torn one keeps its length."""
    _, old, new = known
    with tempfile.TemporaryDirectory() as folder:
        for path, found in files.items():
            os.makedirs(os.path.dirname(folder + path), exist_ok=True)
            content = (
                b"old"
                if found == old
                else b"new"
                if found == new
                else medium.content_of(path, found)
            )
            with open(folder + path, "wb") as file:
                file.write(content)
            os.chmod(folder + path, 0o755)
        return subprocess.run(
            [program, "13", "start", folder], check=True, stdout=subprocess.PIPE, text=True
        ).stdout.strip()
