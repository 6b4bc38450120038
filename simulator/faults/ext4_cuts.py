"""Cuts the power at every write and flush that a run sends to an ext4 disk, and loses any part of
what was not yet flushed."""

import os
import random
import shutil
import struct
import subprocess
import tempfile

from medium import PARTS, QUICK_WRITING, Medium, lasting

SECTOR = 512
FLUSH, FUA, DISCARD = 1, 2, 4
SUBSETS = 3  # random ones at each point
SIZE = 12 << 20
STORAGE = (
    "mount -t ext4 /dev/vda /media\n"
    + "".join(f"mount --bind /media/{part} /{part}\n" for part in PARTS)
    + QUICK_WRITING
)


def run(*command):
    return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode


def make_disk(path, tree):
    with tempfile.TemporaryDirectory() as folder:
        for part in PARTS + ["data/app/log"]:
            os.makedirs(f"{folder}/{part}", exist_ok=True)
        for name, content in tree.items():
            os.makedirs(os.path.dirname(folder + name), exist_ok=True)
            with open(folder + name, "wb") as file:
                file.write(content.encode() if isinstance(content, str) else content)
            os.chmod(folder + name, 0o755)
        with open(path, "wb") as file:
            file.truncate(SIZE)
        if run("mkfs.ext4", "-q", "-b", "4096", "-J", "size=4", "-d", folder, path) != 0:
            raise RuntimeError("mkfs.ext4 failed")


def logged(path):
    """The operations of a log of writes (the kernel's Documentation/admin-guide/device-mapper/
    log-writes.rst): (first byte, data, whether it flushes all before, whether it is durable)."""
    with open(path, "rb") as file:
        log = file.read()
    _, _, count, sector = struct.unpack_from("<QQQI", log)
    at, operations = sector, []
    for _ in range(count):
        first, length, flags, _ = struct.unpack_from("<QQQQ", log, at)
        at += sector
        data = b""
        if length and not flags & DISCARD:
            data = log[at : at + length * SECTOR]
            at += length * SECTOR
        operations.append((first * SECTOR, data, bool(flags & FLUSH), bool(flags & FUA)))
    return operations


def points(operations):
    """States in which the disk may have been left: for each the list of writes that reached it."""
    chance = random.Random(1)
    safe, unsafe = [], []
    for first, data, flushes, is_safe in operations:
        if flushes:
            safe, unsafe = safe + unsafe, []
        if data:
            (safe if is_safe and not unsafe else unsafe).append((first, data))
        yield safe + unsafe
        for _ in range(SUBSETS if unsafe else 0):
            yield safe + [write for write in unsafe if chance.random() < 0.5]


def files_on(disk, writes, folder):
    """The files on a disk after these writes, by path; None if it cannot be repaired."""
    image, tree = f"{folder}/image", f"{folder}/tree"
    shutil.copyfile(disk, image)
    with open(image, "r+b") as file:
        for first, data in writes:
            file.seek(first)
            file.write(data)
    if run("e2fsck", "-fy", image) > 1:
        return None
    shutil.rmtree(tree, ignore_errors=True)
    os.makedirs(tree)
    run("debugfs", "-R", f"rdump {' '.join('/' + part for part in PARTS)} {tree}", image)
    files = {}
    for place, _, names in os.walk(tree):
        for name in names:
            with open(f"{place}/{name}", "rb") as file:
                files[f"{place}/{name}".removeprefix(tree)] = file.read()
    return files


class Ext4(Medium):
    def __init__(self, build, arm_build):
        super().__init__(build, arm_build, ["crc32c_generic", "virtio_blk", "ext4"])

    def play(self, name, start, rest):
        folder = f"{self.build}/system/ext4"
        os.makedirs(folder, exist_ok=True)
        before, disk, log = (f"{folder}/{file}" for file in ("before", "disk", "log"))
        make_disk(before, lasting(self.tree))
        shutil.copyfile(before, disk)
        open(log, "wb").close()
        tree = {
            path: content for path, content in self.tree.items() if path not in lasting(self.tree)
        } | {"/etc/storage": STORAGE}
        self.run(
            name,
            tree,
            start,
            rest,
            [
                "-blockdev",
                f"driver=file,node-name=disk,filename={disk}",
                "-blockdev",
                f"driver=file,node-name=log,filename={log}",
                "-blockdev",
                "driver=blklogwrites,node-name=logged,file=disk,log=log",
                "-device",
                "virtio-blk-device,drive=logged",
            ],
        )
        return (files_on(before, [], folder), self.old, self.new), (
            files_on(before, writes, folder) for writes in points(logged(log))
        )

    def content_of(self, _, found):
        return found
