#!/usr/bin/env python3
"""Compares the updater with two others that Debian packages, and prints a table (Markdown).

usage: compare_updaters.py RENEWER RENEWER_PACK [MEBIBYTES]

Sizes are those of the stripped programs, libraries are counted by ldd(1). Each checks a signed
package with one file system image of random bytes in its own way and installs nothing. A damaged
copy must be refused, which proves that the content was checked.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

MANIFEST = "[update]\ncompatible=receiver\nversion=1\n\n[image.rootfs]\nfilename=rootfs.img\n"
DESCRIPTION = """software = {
    version = "1.0.0";
    hardware-compatibility: [ "1.0" ];
    images: ( { filename = "rootfs.img"; device = "/dev/null"; sha256 = "%s"; } );
}
"""


def run(line, **how):
    return subprocess.run(
        line, shell=True, check=True, text=True, capture_output=True, **how
    ).stdout


def check_of(command):
    """Exit status, seconds and peak KiB of a command, by time(1): the memory of the process that
    starts a command counts for its peak, and time(1) is small."""
    done = subprocess.run(
        ["/usr/bin/time", "-q", "-f", "%e %M", "-o", "measured", *command.split()],
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
    )
    seconds, peak = pathlib.Path("measured").read_text().split()
    return done.returncode, float(seconds), int(peak)


def make_packages(work, pack):
    image = work / "content/rootfs.img"
    run(
        "openssl req -x509 -newkey rsa:2048 -nodes -keyout key.pem -out cert.pem -subj /CN=maker"
        " -addext extendedKeyUsage=emailProtection; minisign -G -W -p key.pub -s key",
        cwd=work,
    )
    (work / "content/manifest.raucm").write_text(MANIFEST)
    run("rauc --cert cert.pem --key key.pem bundle content package.raucb", cwd=work)
    digest = run(f"sha256sum {image}").split()[0]
    (work / "sw-description").write_text(DESCRIPTION % digest)
    run(
        "openssl cms -sign -in sw-description -out sw-description.sig -signer cert.pem"
        " -inkey key.pem -outform DER -nosmimecap -binary; ln content/rootfs.img .;"
        " printf 'sw-description\\nsw-description.sig\\nrootfs.img\\n' | cpio -o -H crc >package.swu",
        cwd=work,
    )
    run(
        f"{pack} create -o package.bin --version 1.1.4.0 --pn 101356340012 --revision 1a2b3c4d"
        f" rootfs={image}; minisign -S -s key -m package.bin",
        cwd=work,
    )


def damage(package):
    with open(package, "r+b") as file:
        file.seek(package.stat().st_size // 2)
        byte = file.read(1)
        file.seek(-1, os.SEEK_CUR)
        file.write(bytes([byte[0] ^ 1]))


def main(renewer, pack, mebibytes, work):
    (work / "content").mkdir()
    with open(work / "content/rootfs.img", "wb") as image:
        for _ in range(mebibytes):
            image.write(os.urandom(1 << 20))
    make_packages(work, pack)
    checks = {
        "renewer": (renewer, f"{pack} check --key key.pub package.bin", "package.bin"),
        "rauc": (
            shutil.which("rauc"),
            "rauc --keyring cert.pem info package.raucb",
            "package.raucb",
        ),
        "swupdate": (
            shutil.which("swupdate"),
            "swupdate -c -H receiver:1.0 -k cert.pem -i package.swu",
            "package.swu",
        ),
    }
    os.chdir(work)
    print(f"| | program, bytes | shared libraries | check of {mebibytes} MiB: peak | time |")
    print("|---|---|---|---|---|")
    for name, (program, command, package) in checks.items():
        run(f"strip -o stripped {program}")
        libraries = sum("=>" in line for line in run(f"ldd {program}").splitlines())
        status, seconds, peak = check_of(command)
        damage(work / package)
        if status != 0 or check_of(command)[0] == 0:
            sys.exit(f"{name} does not judge its package")
        size = os.stat("stripped").st_size
        print(f"| {name} | {size:,} | {libraries} | {peak / 1024:.1f} MiB | {seconds:.2f} s |")


programs = [pathlib.Path(program).resolve() for program in sys.argv[1:3]]
with tempfile.TemporaryDirectory() as directory:
    main(*programs, int(sys.argv[3]) if len(sys.argv) > 3 else 256, pathlib.Path(directory))
