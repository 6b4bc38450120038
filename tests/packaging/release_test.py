#!/usr/bin/python3
"""Makes a release twice, from clones in different folders, and checks the results.

usage: release_test.py SOURCE
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

FOREIGN = """set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/arm-linux-gnueabihf/pkgconfig)
"""
faults = []


def check(holds, what):
    print("ok  " if holds else "FAIL", what)
    if not holds:
        faults.append(what)


def run(*command, **how):
    return subprocess.run(command, check=True, text=True, capture_output=True, **how).stdout


def listing(root):
    return sorted(str(path.relative_to(root)) for path in root.rglob("*") if path.is_file())


def needed(program):
    return re.findall(r"NEEDED.*\[(.*)\]", run("readelf", "-d", program))


def recipe_builds(sources, work, name, options):
    """Configures, builds and installs as an image builder does, with a toolchain of its own."""
    toolchain = work / "toolchain.cmake"
    toolchain.write_text(FOREIGN)
    build, root = work / name, work / (name + "-root")
    run(
        "cmake",
        "-G",
        "Ninja",
        "-S",
        sources,
        "-B",
        build,
        f"-DCMAKE_TOOLCHAIN_FILE={toolchain}",
        "-DCMAKE_INSTALL_PREFIX=/usr",
        *options,
        env={"PATH": "/usr/bin:/bin"},
    )
    run("cmake", "--build", build)
    run(
        "cmake",
        "--install",
        build,
        "--component",
        "updater",
        env={"PATH": "/usr/bin", "DESTDIR": root},
    )
    files = listing(root)
    check(files == ["data/sbin/renewer"], f"{name}: installs {files}")
    check(needed(root / "data/sbin/renewer") == ["libc.so.6"], f"{name}: needs the C library alone")


def main(source, work):
    run("minisign", "-G", "-W", "-p", work / "key.pub", "-s", work / "key")
    sums = []
    for folder in ("one", "another/deeper folder"):
        run("git", "clone", "-q", source, work / folder)
        run(work / folder / "packaging/release.sh", work / folder / "out", work / "key")
        sums.append((work / folder / "out/SHA256SUMS").read_text())
    out = work / "one/out"
    check(sums[0] == sums[1] and len(sums[0].splitlines()) == 6, "two releases are identical")
    run("sha256sum", "-c", "SHA256SUMS", cwd=out)
    run("minisign", "-V", "-p", work / "key.pub", "-m", out / "SHA256SUMS")
    complaints = subprocess.run(["lintian", *out.glob("*.deb")], text=True, capture_output=True)
    check(
        not re.search("^[EW]: ", complaints.stdout, re.M), f"lintian is content {complaints.stdout}"
    )

    (work / "debian").mkdir()
    for package in out.glob("*.deb"):
        run("dpkg-deb", "-x", package, work / "debian" / package.stem.split("_")[0])
    unit = work / "debian/renewer"
    check("usr/sbin/renewer" in listing(unit), "the unit's package holds the updater")
    check(needed(unit / "usr/sbin/renewer") == ["libc.so.6"], "it needs the C library alone")

    desk = work / "debian/renewer-tools/usr"
    verdict = run(desk / "bin/renewer-desk", "demo", "--plain", "--speed", "100").splitlines()[-1]
    check(verdict.startswith("UPDATED"), f"the desk runs from where it is unpacked: {verdict}")
    check(
        {"share/man/man1/renewer-desk.1.gz", "share/bash-completion/completions/renewer-desk"}
        < set(listing(desk)),
        "the desk has its manual page and its completion",
    )

    run("tar", "-xf", next(out.glob("*.tar.gz")), "-C", work)
    sources = next(work.glob("renewer-*/"))
    makefile = (sources / "packaging/buildroot/package/renewer/renewer.mk").read_text()
    options = re.search(r"^RENEWER_CONF_OPTS = (.*)$", makefile, re.M)[1].split()
    recipe_builds(sources, work, "buildroot", [*options, "-DRENEWER_LIBRARIES=OFF"])
    recipe = next((sources / "packaging/yocto").rglob("*.bb"))
    options = re.search(r'^EXTRA_OECMAKE = "(.*)"$', recipe.read_text(), re.M)[1].split()
    recipe_builds(sources, work, "yocto", [*options, "-DRENEWER_LIBRARIES=OFF"])
    licence = re.search(r"md5=(\w+)", recipe.read_text())[1]
    check(run("md5sum", sources / "LICENSE").startswith(licence), "the recipe names the licence")
    check(
        all(
            sources.name.endswith(version)
            for version in (
                re.search(r"^RENEWER_VERSION = (.*)$", makefile, re.M)[1],
                recipe.stem.split("_")[1],
            )
        ),
        "the recipes name the version",
    )


work_directory = pathlib.Path(tempfile.mkdtemp(prefix="release-test."))
try:
    main(pathlib.Path(sys.argv[1]).resolve(), work_directory)
finally:
    shutil.rmtree(work_directory)
sys.exit(1 if faults else 0)
