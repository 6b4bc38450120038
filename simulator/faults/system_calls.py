"""Lets every system call of a run, and of the commands that it runs, fail in turn, and cuts the
unit's power before, after and halfway through each one that changes storage."""

import collections
import concurrent.futures
import os
import subprocess

ERRORS = {
    "5": "input/output error",
    "11": "no process",
    "12": "no memory",
    "24": "too many files",
    "28": "no space",
}
# Failures with an explanation: for the shell, a script that cannot be read further ends there.
EXPLAINED = {("/bin/sh /firmware/install.sh #1|read|1", "5")}
TRIES = 3
ALIKE = 3  # how many calls of one name on one file are tried per process


def lines_of(program, *arguments):
    return subprocess.run(
        [program, *arguments], check=True, stdout=subprocess.PIPE, text=True
    ).stdout.splitlines()


def cases_of(program, model):
    seen = collections.Counter()
    for line in lines_of(program, model, "calls"):
        key, subject, changes, halves, errors = line.split("\t")
        who, name, _ = key.split("|")
        seen[who, name, subject] += 1
        starts_program = who.startswith("/.simulator")
        if starts_program or subject and seen[who, name, subject] > ALIKE:
            continue
        for error in errors.split():
            yield model, key, error
        if changes == "changes":
            yield model, key, "before"
            yield model, key, "after"
        if halves == "halves":
            yield model, key, "half"


def outcome_of(program, case):
    """Returns whether the fault occurred, and the result. Threads are scheduled differently each
    time: a call that was not made this time may be made the next time."""
    for _ in range(TRIES):
        (line,) = lines_of(program, case[0], "fault", *case[1:])
        seen, outcome = line.split("\t")
        if seen == "seen":
            break
    return seen, outcome


def sweep(program, stride=1):
    """Counts the results by model and kind of fault, and lists what did not hold."""
    cases = [case for model in ["13", "16"] for case in cases_of(program, model)][::stride]
    counts = collections.defaultdict(collections.Counter)
    broken = []
    with concurrent.futures.ThreadPoolExecutor(2 * os.cpu_count()) as pool:
        outcomes = pool.map(lambda case: outcome_of(program, case), cases)
        for (model, key, what), (seen, outcome) in zip(cases, outcomes):
            count = counts[model, ERRORS.get(what, f"cut {what}")]
            count["tried"] += 1
            count["seen"] += seen == "seen"
            if outcome not in ("held", "window"):
                outcome, found = "explained" if (key, what) in EXPLAINED else "broken", outcome
            count[outcome] += 1
            if outcome == "broken":
                broken.append(f"{model} {key} {what}: {found}")
    return counts, broken
