#!/usr/bin/env python3
"""Compares the package operations with the usual commands, and prints a table (Markdown).

Each operation is a process of its own. They are run in turn, and the best run of each counts,
because other activity of the machine can only make them slower. The files are in memory.
"""

import argparse
import pathlib
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import time

MIB = 1 << 20


class Best:
    """The best times of a command so far, in seconds."""

    def __init__(self):
        self.wall = self.cpu = float("inf")

    def take(self, wall, cpu):
        self.wall = min(self.wall, wall)
        self.cpu = min(self.cpu, cpu)


def children_cpu():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def timed(command):
    before, begin = children_cpu(), time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=True)
    wall, cpu = time.perf_counter() - begin, children_cpu() - before
    return wall, cpu, done.stderr.decode()


def in_turn(commands, rounds, leftovers=()):
    best = {name: Best() for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            for path in leftovers:
                path.unlink(missing_ok=True)
            wall, cpu, _ = timed(command)
            best[name].take(wall, cpu)
    return best


def row(name, ours, theirs, aim):
    wall = sum(ours) / sum(theirs)
    print(
        f"| {name} | {1e3 * sum(ours):.0f} ms | {1e3 * sum(theirs):.0f} ms | {wall:.2f} | {aim} |"
    )


def speed(program, work, size, rounds):
    payload, package = work / "payload", work / "package"
    with open("/dev/urandom", "rb") as source, payload.open("wb") as target:
        for _ in range(size // MIB):
            target.write(source.read(MIB))
    timed([program, "generate", payload, package])
    made, copy, out = work / "made", work / "copy", work / "out"
    best = in_turn(
        {
            "check": [program, "check", package],
            "openssl": ["openssl", "md5", package],
            "unpack": [program, "unpack", package, out],
            "cp": ["cp", payload, copy],
            "generate": [program, "generate", payload, made],
        },
        rounds,
        [made, copy, out / "rootfs.bin"],
    )
    print(f"| {size // MIB} MiB, best of {rounds} | renewer | usual commands | ratio | aim |")
    print("|---|---|---|---|---|")
    for kind in ("wall", "cpu"):
        seconds = {name: getattr(value, kind) for name, value in best.items()}
        label = "elapsed" if kind == "wall" else "processor"
        row(
            f"`validate_package_new` / `openssl md5` ({label})",
            [seconds["check"]],
            [seconds["openssl"]],
            "1.05",
        )
        row(f"`unpack_package_new` / `cp` ({label})", [seconds["unpack"]], [seconds["cp"]], "1.3")
        row(
            f"`gen_package` / `cp` and `openssl md5` ({label})",
            [seconds["generate"]],
            [seconds["cp"], seconds["openssl"]],
            "1.1",
        )


def candidate(version):
    """An old-layout header whose part number fits a unit 1013."""
    pn = bytes.fromhex("10135604001204").ljust(16, b"\0")
    return struct.pack("<I16xI16sIIIII", 0x77007700, version, pn, 14, 0, 0, 0, 0)


def discovery(program, work, candidates, rounds):
    directory = work / "candidates"
    directory.mkdir()
    for number in range(candidates):
        (directory / f"update_{number:05}_b20240523.bin").write_bytes(candidate(number + 1))
    best = in_turn(
        {
            "find": [program, "find", directory, "1013560000000000"],
            "usual": [
                "find",
                directory,
                "-name",
                "update_*.bin",
                "-exec",
                "head",
                "-c",
                "60",
                "{}",
                ";",
            ],
        },
        rounds,
    )
    print(
        f"\n| {candidates} candidates | `find_valid_package` | `find` with `head` | times faster |"
        " aim |\n|---|---|---|---|---|"
    )
    ours, usual = best["find"].wall, best["usual"].wall
    print(f"| elapsed | {1e3 * ours:.0f} ms | {1e3 * usual:.0f} ms | {usual / ours:.0f} | 10 |")


def peak_memory(program, work, sizes):
    print(
        "\n| peak memory | "
        + " | ".join(f"{size / MIB:.0f} MiB" for size in sizes)
        + " | aim |\n"
        + "|---" * (len(sizes) + 2)
        + "|"
    )
    payload, package, out = work / "large", work / "large_package", work / "large_out"
    peaks = {"generate": [], "check": [], "unpack": []}
    for size in sizes:
        with payload.open("wb") as file:
            file.truncate(size)
        for name, arguments in (
            ("generate", [payload, package]),
            ("check", [package]),
            ("unpack", [package, out]),
        ):
            _, _, told = timed([program, name, *arguments])
            peaks[name].append(int(told.split()[1]))
        shutil.rmtree(out)
    for name, values in peaks.items():
        print(f"| `{name}` | " + " | ".join(f"{value} KiB" for value in values) + " | 4096 KiB |")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", type=pathlib.Path, help="package_operations")
    parser.add_argument("--size", type=int, default=256, help="MiB of the package")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--quick", action="store_true", help="small sizes, to see that it works")
    options = parser.parse_args()
    memory = pathlib.Path("/dev/shm")
    large = 1900 * MIB
    if options.quick:
        options.size, options.rounds, large = 4, 1, 64 * MIB
    with tempfile.TemporaryDirectory(dir=memory if memory.is_dir() else None) as directory:
        program, work = options.program.resolve(), pathlib.Path(directory)
        speed(program, work, options.size * MIB, options.rounds)
        discovery(program, work, 100 if options.quick else 10000, min(options.rounds, 3))
    with tempfile.TemporaryDirectory() as directory:
        peak_memory(program, pathlib.Path(directory), [MIB, large])


if __name__ == "__main__":
    sys.exit(main())
