#!/usr/bin/env python3
"""Sweeps faults and power cuts over whole updates, and writes the results into a document.

usage: faults.py SOURCE RELEASE_BUILD ARM_BUILD WORK_FOLDER [--every N] [calls|ext4|ubifs]...

The document's table is between the lines "<!-- begin -->" and "<!-- end -->"; rows of parts that
are not swept this time are kept.
"""

import argparse
import json
import os
import sys
import time

parser = argparse.ArgumentParser()
for name in ("source", "release", "arm", "work"):
    parser.add_argument(name)
parser.add_argument("--every", type=int, default=1, help="of the system calls, try each N-th")
parser.add_argument("parts", nargs="*", default=["calls", "ext4", "ubifs"])
options = parser.parse_args()
sys.path.insert(0, f"{options.source}/simulator/guest")

import medium  # noqa: E402
import system_calls  # noqa: E402
from ext4_cuts import Ext4  # noqa: E402
from ubifs_cuts import Ubifs  # noqa: E402

PROGRAM = f"{options.release}/simulator/faults/system_calls"
DOCUMENT = f"{options.source}/docs/reliability.md"
MODELS = {"13": "LED unit, from the installed copy", "16": "screen unit, from another copy"}


def sweep_calls():
    counts, broken = system_calls.sweep(PROGRAM, options.every)
    for (model, kind), count in sorted(counts.items()):
        yield [
            f"{kind}; {MODELS[model]}",
            count["tried"],
            count["seen"],
            count["held"],
            count["window"],
            count["explained"],
            count["broken"],
            "in each",
        ], broken
        broken = []


def sweep_medium(name, storage):
    for rest in (0, medium.REST_S):
        for start in medium.STARTS:
            count, broken = medium.sweep(storage, name, PROGRAM, start, rest)
            resting = f", rests of {rest} s" if rest else ""
            yield [
                f"{name}; from {start}{resting}",
                count["tried"],
                "-",
                count["held"],
                count["window"],
                0,
                count["broken"],
                f"{count['second']} of {count['states']}",
            ], broken


SWEEPS = {
    "calls": sweep_calls,
    "ext4": lambda: sweep_medium("ext4", Ext4(options.work, options.arm)),
    "ubifs": lambda: sweep_medium("UBIFS", Ubifs(options.source, options.work, options.arm)),
}
TITLES = {
    "calls": "system calls, on the desk",
    "ext4": "writes and flushes of a disk",
    "ubifs": "programs and erases of a NAND flash, whole and half",
}


def write_document():
    lines = [
        "| what went wrong | tried | seen | held | in the window | explained | did not hold | "
        "starts from what was left that ended well |",
        "|---|---|---|---|---|---|---|---|",
    ]
    for part in SWEEPS:
        path = f"{options.work}/faults/{part}.json"
        if os.path.exists(path):
            with open(path) as file:
                lines.append(f"| **{TITLES[part]}** | | | | | | | |")
                lines += ["| " + " | ".join(map(str, row)) + " |" for row in json.load(file)]
    with open(DOCUMENT) as file:
        before, rest = file.read().split("<!-- begin -->")
    with open(DOCUMENT, "w") as file:
        file.write(
            before
            + "<!-- begin -->\n"
            + "\n".join(lines)
            + "\n<!-- end -->"
            + rest.split("<!-- end -->")[1]
        )


def main():
    failed = False
    os.makedirs(f"{options.work}/faults", exist_ok=True)
    for part in options.parts:
        began, rows = time.time(), []
        for row, broken in SWEEPS[part]():
            rows.append(row)
            print(*row, sep="  ")
            for line in broken:
                print("did not hold:", line, flush=True)
            failed = failed or bool(broken) or row[2] not in (row[1], "-")
            with open(f"{options.work}/faults/{part}.json", "w") as file:
                json.dump(rows, file)
            write_document()
        print(f"{part}: {time.time() - began:.0f} s", flush=True)
    sys.exit(failed)


main()
