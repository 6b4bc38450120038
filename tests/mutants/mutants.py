#!/usr/bin/env python3
"""Puts small faults into src/, one at a time, and sees whether a test fails.

usage: mutants.py SOURCES WORK REPORT [REGEX]

SOURCES is the root of the project, WORK a directory for a copy of it and its build, and REPORT the
document to write. With REGEX only the faults whose file or text it is found in are tried, and no
document is written. Ends with 1 when a fault lives that faults.txt does not explain.

Built without optimisation and sanitizers: what only they see counts as living.
"""

import concurrent.futures
import dataclasses
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time

JOBS = 2
LONGEST_TEST_S = 60


@dataclasses.dataclass
class Fault:
    path: str
    first: str  # the tests to try first, as a regular expression
    text: str
    replacement: str
    reason: str  # why no test sees it; empty for one that is to be seen
    killer: str = ""

    def __str__(self):
        return f"{self.path}: {self.text} => {self.replacement}"


@dataclasses.dataclass
class Test:
    name: str
    command: list
    directory: str
    longest_s: float

    @property
    def program(self):
        return os.path.basename(self.command[0])

    def passes(self):
        try:
            return (
                subprocess.run(
                    self.command,
                    cwd=self.directory,
                    timeout=self.longest_s,
                    stdin=subprocess.DEVNULL,
                    stdout=subprocess.DEVNULL,
                    stderr=subprocess.DEVNULL,
                ).returncode
                == 0
            )
        except subprocess.TimeoutExpired:
            return False


def read_faults(path):
    faults = []
    for line in path.read_text().splitlines():
        if not line or line.startswith("#"):
            continue
        if not line.startswith(" "):
            source, _, first = line.partition(" ")
            continue
        change, _, reason = line.partition(" ## ")
        text, _, replacement = (change + " ").partition(" => ")
        faults.append(Fault(source, first, text.strip(), replacement.strip(), reason.strip()))
    return faults


def check_texts(faults, source):
    for fault in faults:
        count = (source / fault.path).read_text().count(fault.text)
        if count != 1:
            sys.exit(f"{fault}\nis found {count} times")


def copy_sources(source, copy):
    """Touches only what has changed. The files themselves tell: a fault that an interrupted trial
    left is newer than the sound source."""
    listed = subprocess.run(
        ["git", "ls-files", "-z", "-c", "-o", "--exclude-standard"],
        cwd=source,
        check=True,
        capture_output=True,
        text=True,
    )
    names = {name for name in listed.stdout.split("\0") if name and (source / name).exists()}
    for old in [path for path in copy.rglob("*") if path.is_file()]:
        if str(old.relative_to(copy)) not in names:
            old.unlink()
    for name in names:
        target = copy / name
        if not target.exists() or target.read_bytes() != (source / name).read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(source / name, target)
        shutil.copymode(source / name, target)


def configure(copy, build):
    launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    subprocess.run(
        [
            "cmake",
            "-S",
            copy,
            "-B",
            build,
            "-G",
            "Ninja",
            "-DCMAKE_BUILD_TYPE=None",
            "-DCMAKE_CXX_FLAGS=-O0 -w",
            *launcher,
            "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
        ],
        check=True,
        stdout=subprocess.DEVNULL,
    )


def make(build, *targets):
    built = subprocess.run(
        ["ninja", "-C", build, "--quiet", f"-j{JOBS}", *targets], capture_output=True, text=True
    )
    if built.returncode != 0:
        print(built.stdout)
    return built.returncode == 0


def list_tests(build):
    """All but those that need another one to have been run before them."""
    listing = subprocess.run(
        ["ctest", "--test-dir", build, "--show-only=json-v1"],
        check=True,
        capture_output=True,
        text=True,
    )
    tests = []
    for test in json.loads(listing.stdout)["tests"]:
        properties = {one["name"]: one["value"] for one in test["properties"]}
        if "FIXTURES_REQUIRED" not in properties:
            # Tests that the build allows more than the usual 120 s take longer than most.
            longest = properties.get("TIMEOUT", 0)
            tests.append(
                Test(
                    test["name"],
                    test["command"],
                    properties["WORKING_DIRECTORY"],
                    longest if longest > 120 else LONGEST_TEST_S,
                )
            )
    return tests


def stages(fault, tests):
    """The tests in groups, those that are likely to see the fault first."""
    path = pathlib.Path(fault.path)
    folder = path.parent.name + "/"
    left = tests
    for chosen in [
        lambda test: fault.first and re.search(fault.first, test.name),
        lambda test: test.program == path.stem + "_test",
        lambda test: test.name.startswith(folder),
        lambda test: test.name.startswith("run/"),
        lambda test: True,
    ]:
        yield [test for test in left if chosen(test)]
        left = [test for test in left if not chosen(test)]


def first_failure(tests):
    """A test that fails twice; alone the second time, since the machine may be busy."""
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        running = {pool.submit(test.passes): test for test in tests}
        for ended in concurrent.futures.as_completed(running):
            if not ended.result():
                pool.shutdown(wait=True, cancel_futures=True)
                if not running[ended].passes():
                    return running[ended].name
                return first_failure([test for test in tests if test is not running[ended]])
    return ""


def killer_of(fault, build, tests):
    for stage in stages(fault, tests):
        programs = {test.program for test in stage if test.command[0].startswith(str(build))}
        if programs and not make(build, *sorted(programs)):
            return ""  # what does not build is no fault: it is listed as living
        killer = first_failure(stage)
        if killer:
            return killer
    return ""


def try_fault(fault, copy, build, tests):
    file = copy / fault.path
    sound = file.read_text()
    file.write_text(sound.replace(fault.text, fault.replacement))
    try:
        fault.killer = killer_of(fault, build, tests)
    finally:
        file.write_text(sound)


def report_of(faults):
    lines = [
        "# What the tests would see",
        "",
        "Written by `./dev mutants`, which puts the small faults of `tests/mutants/faults.txt`",
        "into `src/`, one at a time, and runs the tests on each until one fails twice.",
        "",
        f"**{sum(bool(fault.killer) for fault in faults)} of {len(faults)} faults are killed.**",
        "",
        "| folder | faults | killed |",
        "| --- | --- | --- |",
    ]
    for folder in sorted({os.path.dirname(fault.path) for fault in faults}):
        inside = [fault for fault in faults if os.path.dirname(fault.path) == folder]
        lines.append(f"| {folder} | {len(inside)} | {sum(bool(one.killer) for one in inside)} |")
    living = [fault for fault in faults if not fault.killer]
    if living:
        lines += ["", "Those that live, and why:", ""]
    for fault in living:
        change = (
            f"`{fault.text}` becomes `{fault.replacement}`"
            if fault.replacement
            else f"without `{fault.text}`"
        )
        lines.append(f"- {fault.path}, {change}: {fault.reason or 'not explained yet'}")
    return "\n".join(lines) + "\n"


def main(source, work, report, wanted=""):
    source, work = pathlib.Path(source).resolve(), pathlib.Path(work).resolve()
    copy, build = work / "source", work / "build"
    faults = read_faults(source / "tests/mutants/faults.txt")
    check_texts(faults, source)
    faults = [fault for fault in faults if re.search(wanted, str(fault))]
    copy_sources(source, copy)
    configure(copy, build)
    if not make(build):
        return 1
    tests = list_tests(build)
    if not wanted and (failing := first_failure(tests)):
        sys.exit(f"{failing} fails without any fault")
    for number, fault in enumerate(faults, 1):
        begin = time.monotonic()
        try_fault(fault, copy, build, tests)
        print(
            f"{number}/{len(faults)} {time.monotonic() - begin:5.1f} s  {fault}\n"
            f"    {fault.killer or 'LIVES ' + fault.reason}",
            flush=True,
        )
    if not wanted:
        (source / report).write_text(report_of(faults))
    unexplained = [fault for fault in faults if not fault.killer and not fault.reason]
    print(
        f"killed {sum(bool(fault.killer) for fault in faults)} of {len(faults)}, "
        f"{len(unexplained)} of the others not explained"
    )
    return 1 if unexplained else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]) if len(sys.argv) > 3 else __doc__)
