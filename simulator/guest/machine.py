"""Runs a unit on a kernel of its own: Debian's ARM kernel in QEMU.

The kernel and the guest's programs come from Debian packages, which are unpacked, not installed.
The guest's clock counts its instructions, so waits cost nothing and times are reproducible.
"""

import fcntl
import glob
import os
import re
import stat
import subprocess
import tarfile

KERNEL = "linux-image-armmp:armhf"
PACKAGES = ["busybox-static:armhf"]
MODULES = ["virtio_mmio", "virtio_console", "evdev", "uinput", "leds-gpio", "cuse", "industrialio"]
C_LIBRARY = "/usr/arm-linux-gnueabihf/lib"
LEDS = [
    "Light_Static_Data",
    "Light_Gps",
    "Light_Data_Se",
    "Light_Data_Re",
    "Light_Charge",
    "Light_Power",
    "Oled_Power",
    "Oled_Rst",
]  # on the lines of the machine's GPIO controller
QEMU = ["qemu-system-arm", "-M", "virt", "-cpu", "cortex-a15", "-m", "192", "-nic", "none"]
LONGEST_RUN_S = 1500


def run(command, **how):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **how).stdout


def unpack(packages, folder):
    """Downloads and unpacks packages, unless that has been done."""
    for package in packages:
        mark = f"{folder}/.{package}"
        if not os.path.exists(mark):
            os.makedirs(folder, exist_ok=True)
            for old in glob.glob(f"{folder}/*.deb"):
                os.remove(old)
            run(["apt-get", "download", "-q", package], cwd=folder, stderr=subprocess.DEVNULL)
            run(["dpkg", "-x", glob.glob(f"{folder}/*.deb")[0], folder])
            open(mark, "w").close()


def kernel_package():
    """The present kernel package, on which the one without a version depends."""
    return re.search(r"Depends: (linux-image-\S+)", run(["apt-cache", "depends", KERNEL])).group(1)


def device_tree(path):
    """The machine's own device tree, with LEDs on GPIO lines instead of QEMU's power key."""
    run(
        QEMU[:2] + [f"virt,dumpdtb={path}"] + QEMU[3:] + ["-display", "none"],
        stderr=subprocess.DEVNULL,
    )
    source = run(["dtc", "-q", "-O", "dts", path])
    controller = re.search(r"pl061@\w+ \{[^}]*phandle = <(\w+)>", source).group(1)
    leds = "".join(
        f'led-{line} {{ label = "{name}"; gpios = <{controller} {line} 0>; }};'
        for line, name in enumerate(LEDS)
    )
    source += f'/ {{ /delete-node/ gpio-keys; leds {{ compatible = "gpio-leds"; {leds} }}; }};'
    run(["dtc", "-q", "-O", "dtb", "-o", path], input=source)


class Archive:
    """An initial file system: a cpio archive in the kernel's "newc" format; several can be
    concatenated."""

    def __init__(self):
        self.content = bytearray()
        self.count = 0

    def add(self, path, mode, data=b""):
        self.count += 1
        name = path.lstrip("/").encode() + b"\0"
        numbers = [self.count, mode, 0, 0, 1, 0, len(data), 0, 0, 0, 0, len(name), 0]
        self.content += b"070701" + b"".join(b"%08X" % number for number in numbers) + name
        self.pad()
        self.content += data
        self.pad()

    def pad(self):
        self.content += b"\0" * (-len(self.content) % 4)

    def directory(self, path):
        self.add(path, stat.S_IFDIR | 0o755)

    def file(self, path, data, mode=0o644):
        self.add(path, stat.S_IFREG | mode, data.encode() if isinstance(data, str) else data)

    def link(self, path, target):
        self.add(path, stat.S_IFLNK | 0o777, target.encode())

    def copy(self, path, source, mode=0o755):
        with open(source, "rb") as file:
            self.file(path, file.read(), mode)

    def finish(self):
        self.add("TRAILER!!!", 0)
        return bytes(self.content)


class Machine:
    """The machine, set up in a folder that keeps the downloads. `build` has the programs for the
    unit; `modules` are further kernel modules by name, `own_modules` by file."""

    def __init__(self, folder, build, modules=(), own_modules=()):
        self.folder = folder = os.path.abspath(folder)
        os.makedirs(folder, exist_ok=True)
        with open(f"{folder}/.lock", "w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            unpack([kernel_package()] + PACKAGES, f"{folder}/packages")
            device_tree(f"{folder}/machine.dtb")
        self.kernel = glob.glob(f"{folder}/packages/boot/vmlinuz-*")[0]
        self.base = self.base_archive(build, MODULES + list(modules), own_modules)

    def base_archive(self, build, modules, own_modules):
        packages = f"{self.folder}/packages"
        release = os.path.basename(self.kernel).removeprefix("vmlinuz-")
        archive = Archive()
        for path in [
            "bin",
            "sbin",
            "usr",
            "usr/bin",
            "usr/sbin",
            "lib",
            "lib/modules",
            "proc",
            "sys",
            "dev",
            "tmp",
            "etc",
            "etc/init.d",
            "data",
            "data/app",
            "data/app/log",
            "data/sbin",
            "firmware",
            "firmware/update",
            "reserve",
            "reserve/update",
            "update",
            "update/hw",
            "media",
            "media/sda1",
            "unit",
        ]:
            archive.directory(path)
        archive.copy("/init", f"{build}/simulator/guest/renewer-guest")
        archive.link("/usr/sbin/S080_application", "/init")
        archive.copy("/bin/busybox", f"{packages}/bin/busybox")
        archive.link("/bin/sh", "busybox")
        for name in ["ld-linux-armhf.so.3", "libc.so.6"]:
            archive.copy(f"/lib/{name}", f"{C_LIBRARY}/{name}")
        self.add_modules(archive, packages, release, modules, own_modules)
        return archive.finish()

    def add_modules(self, archive, packages, release, modules, own_modules):
        run(["depmod", "-b", packages, release], stderr=subprocess.DEVNULL)
        needed = run(["modprobe", "-d", packages, "-S", release, "-a", "--show-depends"] + modules)
        files = dict.fromkeys(re.findall(rf"insmod {packages}/(\S+)", needed))
        paths = [f"{packages}/{path}" for path in files] + list(own_modules)
        for path in paths:
            archive.copy("/lib/modules/" + os.path.basename(path), path, 0o644)
        archive.file("/etc/modules", "".join(os.path.basename(path) + "\n" for path in paths))

    def play(self, name, archive, options=()):
        """Runs the machine with an additional archive until it ends. Returns the console's output
        and the files that it handed over, by path (None for a directory)."""
        folder = f"{self.folder}/runs/{name}"
        os.makedirs(folder, exist_ok=True)
        with open(f"{folder}/initrd", "wb") as file:
            file.write(self.base + archive.finish())
        subprocess.run(
            QEMU
            + [
                "-no-reboot",
                "-display",
                "none",
                "-monitor",
                "none",
                "-icount",
                "shift=1,sleep=off",
                "-rtc",
                "clock=vm,base=2024-05-23",
                "-kernel",
                self.kernel,
                "-dtb",
                f"{self.folder}/machine.dtb",
                "-initrd",
                f"{folder}/initrd",
                "-append",
                "console=ttyAMA0 quiet panic=-1",
                "-serial",
                f"file:{folder}/console",
                "-device",
                "virtio-serial-device",
                "-chardev",
                f"file,id=results,path={folder}/results.tar",
                "-device",
                "virtserialport,chardev=results",
                *options,
            ],
            check=True,
            timeout=LONGEST_RUN_S,
        )
        with open(f"{folder}/console", errors="replace") as file:
            console = file.read()
        files = {}
        with tarfile.open(f"{folder}/results.tar", ignore_zeros=True) as results:
            for member in results:
                content = results.extractfile(member)
                files["/" + member.name] = content.read() if content else None
        return console, files
