#!/usr/bin/env python3
"""Plays scenarios of whole updates on an ARM kernel and compares what each shows, runs and leaves.

usage: system_test.py SOURCE ARM_BUILD BUILD [SCENARIO]...
"""

import concurrent.futures
import difflib
import glob
import os
import re
import sys

from PIL import Image

SOURCE, ARM_BUILD, BUILD = sys.argv[1:4]
sys.path.insert(0, f"{SOURCE}/simulator/guest")

from machine import Machine  # noqa: E402
from scenarios import SCENARIOS  # noqa: E402
from unit import ADC, archive_of, story, usual_tree  # noqa: E402

LETTERS = {
    "Light_Static_Data": "S",
    "Light_Gps": "G",
    "Light_Data_Se": "T",
    "Light_Data_Re": "R",
    "Light_Charge": "C",
    "Light_Power": "P",
}
PROMPT_PICTURES = f"{BUILD}/simulator/unit/pictures"
BUILT_IN_PICTURES = f"{BUILD}/tests/built_in_pictures"
ACKNOWLEDGED = (3000, "runs sh -c touch /tmp/update_over", "remove /tmp/update_over")


def on_screen(path):
    """What the screen shows of a picture file: in its middle, in the 16-bit colours it has."""
    picture, screen = Image.open(path), Image.new("RGB", (294, 126))
    screen.paste(picture, ((294 - picture.width + 1) // 2, (126 - picture.height + 1) // 2))
    five_bits = [value >> 3 << 3 | value >> 5 for value in range(256)]
    six_bits = [value >> 2 << 2 | value >> 6 for value in range(256)]
    return b"P6 294 126 255\n" + screen.point(five_bits + six_bits + five_bits).tobytes()


def known_pictures():
    paths = glob.glob(f"{PROMPT_PICTURES}/*.bmp") + glob.glob(f"{BUILT_IN_PICTURES}/*.bmp")
    return {on_screen(path): os.path.basename(path)[:-4] for path in paths}


def shown(events, files, pictures):
    """What the user saw and for how long, without the moments in which one LED after the other is
    switched."""
    seen, lit, since, now = [], set(), 0.0, None
    for when, line in events + [(events[-1][0], "end")]:
        before = now
        if match := re.match(r"led (Light_\S+) (\d)", line):
            (lit.add if match[2] == "1" else lit.discard)(LETTERS[match[1]])
            now = "".join(letter for letter in "SGTRCP" if letter in lit)
        elif match := re.match(r"screen picture (\d+)", line):
            now = pictures.get(files[f"/result/picture_{match[1]}.ppm"], "an unknown picture")
        elif line != "end":
            continue
        if before is not None and when - since > 0.05:
            if seen and seen[-1][1] == before:
                since -= seen.pop()[0]
            seen.append((when - since, before))
        since = when
    return without_repetition([f"{seconds:.1f} {what}" for seconds, what in seen])


def without_repetition(seen):
    result = []
    while seen:
        times = 1
        while len(seen) > 1 and seen[2 * times : 2 * times + 2] == seen[:2]:
            times += 1
        if times > 1:
            result.append(f"{times} x {seen[0]}, {seen[1]}")
            seen = seen[2 * times :]
        else:
            result.append(seen.pop(0))
    return result


def without_polls(lines):
    """The lines, those of the polls for the end marker only once."""
    return [
        line
        for i, line in enumerate(lines)
        if i == 0 or line != lines[i - 1] or "check_update_over" not in line
    ]


def commands(events):
    return without_polls(
        [
            line[len("runs sh -c ") :]
            for _, line in events
            if line.startswith("runs sh -c ") and "sh -c exec " not in line
        ]
    )


def left(tree, files):
    """The files that are new or other than before, and what they are a copy of."""
    tree = {
        path: content.encode() if isinstance(content, str) else content
        for path, content in tree.items()
    }
    origin = {content: path for path, content in tree.items()}
    result = []
    for path, content in files.items():
        if not path.startswith("/result") and content is not None and tree.get(path) != content:
            result.append(f"{path} = {origin[content]}" if content in origin else path)
    gone = [
        f"{path} is gone"
        for path in tree
        if path.startswith(("/data", "/firmware", "/update")) and path not in files
    ]
    return sorted(result + gone)


def spans(events, wanted):
    """The seconds between lines that contain two texts, for each wanted "<seconds> <text> > <text>"."""
    result = []
    for span in wanted:
        first, second = span.split(" ", 1)[1].split(" > ")
        starts = [when for when, line in events if first in line]
        ends = [when for when, line in events if second in line and starts and when > starts[0]]
        result.append(f"{ends[0] - starts[0]:.1f} {first} > {second}" if ends else "not seen")
    return result


def ending(console, events):
    how = "reboot" if "Restarting system" in console else "power off"
    status = [line for _, line in events if re.match("exit status|signal", line)]
    return ", ".join([how] + [line.removeprefix("exit ") for line in status])


def play(machine, name, pictures):
    """What was expected of a scenario and what was seen, each as lines of text, and the processor time
    and memory that the program took until the reboot, where there was one."""
    scenario = SCENARIOS[name]
    tree = usual_tree(scenario["model"], f"{ARM_BUILD}/src/update/renewer")
    tree |= {
        path if path[0] == "/" else f"{ADC}/{path}": content
        for path, content in scenario.get("tree", {}).items()
    }
    if "prompt_pictures" in scenario:
        for path in glob.glob(f"{PROMPT_PICTURES}/*.bmp"):
            with open(path, "rb") as file:
                tree[f"/reserve/update/{os.path.basename(path)}"] = file.read()
    program = scenario.get("program", "/data/sbin/renewer")
    tree["/etc/story"] = story(
        f"{program} {scenario['arguments']}", scenario.get("story", []) + [ACKNOWLEDGED]
    )
    console, files = machine.play(name, archive_of(tree))
    lines = files["/result/time_line"].decode(errors="replace").splitlines()
    events = [(float(line.split(" ", 1)[0]), line.split(" ", 1)[1]) for line in lines]
    log = (files.get("/data/app/log/update.log") or b"").decode().splitlines()
    seen = {
        "runs": commands(events),
        "shows": shown(events, files, pictures),
        "log": without_polls(log),
        "leaves": left(tree, files),
        "ends": [ending(console, events)],
        "panel": [events[-1][1].removeprefix("panel ")],
        "spans": spans(events, scenario.get("spans", [])),
    }
    wanted = {"panel": ["understood all"], "spans": [], **scenario}
    wanted["log"], wanted["ends"] = scenario.get("log", "").splitlines(), [scenario["ends"]]
    return (
        [f"{part}: {line}" for part in seen for line in wanted[part]],
        [f"{part}: {line}" for part, list_of in seen.items() for line in list_of],
        " ".join((files.get("/result/used") or b"").decode().split()),
    )


def main():
    names = sys.argv[4:] or list(SCENARIOS)
    machine = Machine(f"{BUILD}/system", ARM_BUILD)
    pictures = known_pictures()
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = {name: pool.submit(play, machine, name, pictures) for name in names}
        for name, run in runs.items():
            wanted, seen, used = run.result()
            verdict = "passed" if seen == wanted else "FAILED"
            print(f"{verdict}  {name:24}{used}".rstrip(), flush=True)
            if seen != wanted:
                failed += 1
                print(
                    "\n".join(difflib.unified_diff(wanted, seen, "expected", "seen", lineterm=""))
                )
    sys.exit(failed)


main()
