"""Cuts the power after every page program and every erase of a NAND flash with UBIFS, and halfway
through each."""

import os
import re
import shutil
import subprocess

from machine import run, unpack
from medium import PARTS, QUICK_WRITING, Medium, lasting

STORAGE = (
    """renewer-flash attach
mount -t ubifs ubi0:storage /media
cp -a /stored/. /media/
umount /media
mount -t ubifs ubi0:storage /media
echo begin > /proc/recorded_flash
"""
    + "".join(f"mount --bind /media/{part} /{part}\n" for part in PARTS)
    + QUICK_WRITING
)
AFTER = (
    "sync\n"
    + "".join(f"umount /{part}\n" for part in PARTS)
    + """umount /media
renewer-flash cuts /result/cuts
"""
)


def hash_of(content):
    """FNV-1a, 64 bits, as in renewer-flash."""
    value = 0xCBF29CE484222325
    for byte in content:
        value = (value ^ byte) * 0x100000001B3 & 0xFFFFFFFFFFFFFFFF
    return value


def identity(content):
    content = content.encode() if isinstance(content, str) else content
    return f"{len(content)} {hash_of(content)}"


def build_module(source, folder):
    """Builds the module with the packaged headers of the machine's kernel. The headers expect to be
    installed; here they are only unpacked, so a Makefile leads to the common part."""
    depends = run(["apt-cache", "depends", "linux-headers-armmp:armhf"])
    headers = re.search(r"Depends: (linux-headers-\S+-armmp)", depends).group(1)
    further = run(["apt-cache", "depends", f"{headers}:armhf"])
    common = re.search(r"linux-headers-[\w.-]+-common", further).group()
    tools = re.search(r"linux-kbuild-[\d.]+", further).group()  # for this machine, not for the unit
    unpack([f"{headers}:armhf", common, tools], f"{folder}/headers")
    place = f"{folder}/headers/usr/src/{headers}"
    with open(f"{place}/Makefile", "w") as file:
        file.write(f"include {folder}/headers/usr/src/{common}/Makefile\n")
    shutil.copytree(source, f"{folder}/module", dirs_exist_ok=True)
    subprocess.run(
        [
            "make",
            "-s",
            "-C",
            place,
            f"M={folder}/module",
            "DEB_BUILD_ARCH=desk",
            "DEB_HOST_ARCH=armhf",
            "DEB_HOST_GNU_TYPE=arm-linux-gnueabihf",
            "modules",
        ],
        check=True,
        stdout=subprocess.DEVNULL,
    )
    return f"{folder}/module/recorded_flash.ko"


class Ubifs(Medium):
    def __init__(self, source, build, arm_build):
        module = build_module(
            f"{source}/simulator/flash_module", os.path.abspath(f"{build}/system")
        )
        super().__init__(build, arm_build, ["zstd", "deflate", "ubi", "ubifs"], [module])

    def play(self, name, start, rest):
        kept = lasting(self.tree)
        tree = {
            path if path not in kept else f"/stored{path}": content
            for path, content in self.tree.items()
        }
        tree |= {
            "/stored/data/app/log/.": None,
            "/stored/reserve/.": None,
            "/etc/storage": STORAGE,
            "/etc/after": AFTER,
            "/usr/sbin/renewer-flash": self.program("simulator/guest/renewer-flash"),
        }
        lines = self.run(name, tree, start, rest)["/result/cuts"].decode().splitlines()
        self.contents = {identity(content): content for content in kept.values()}
        return (
            {path: identity(content) for path, content in kept.items()},
            identity(self.old),
            identity(self.new),
        ), map(self.files_in, lines)

    @staticmethod
    def files_in(line):
        files = line.split("\t")[1:]
        if files == ["cannot be mounted"]:
            return None
        return {path: found for path, found in (file.split(" ", 1) for file in files)}

    def content_of(self, _, found):
        """The content with this hash; if unknown, as many zero bytes."""
        content = self.contents.get(found, bytes(int(found.split(" ")[0])))
        return content.encode() if isinstance(content, str) else content
