#!/usr/bin/python3
"""Holds every include to the libraries that the build names.

usage: arrows.py ROOT TARGETS

ROOT is the top of the sources. TARGETS lists what the build made of them, a target a line: the
folder of its sources, its name and the libraries that it links, separated by blanks. A file may
include what lies in its own folder or in that of a library which a target of its folder links by
name, and the folders must not depend on each other in a circle.
"""
import graphlib
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include "(.+)/[^/]+"', re.M)


def main(root, targets):
    folder_of = {}  # library -> folder
    linked = {}  # folder -> libraries
    for line in pathlib.Path(targets).read_text().splitlines():
        folder, name, *libraries = line.split()
        folder = pathlib.Path(folder).relative_to(root)
        folder_of[name.replace("renewer_", "renewer::")] = folder
        linked.setdefault(folder, set()).update(libraries)
    allowed = {
        folder: {folder_of[library] for library in libraries if library in folder_of} | {folder}
        for folder, libraries in linked.items()
    }

    includes = faults = 0
    for folder in allowed:
        for file in [*(root / folder).glob("*.h"), *(root / folder).glob("*.cpp")]:
            for named in INCLUDE.findall(file.read_text()):
                target = next(
                    top / named
                    for top in (pathlib.Path(), pathlib.Path("src"))
                    if (root / top / named).is_dir()
                )
                includes += 1
                if target not in allowed[folder]:
                    faults += 1
                    print(
                        f"{file.relative_to(root)} includes from {target}, "
                        f"which no target of {folder} links"
                    )
    if includes == 0:
        sys.exit("no include was seen")
    try:
        graphlib.TopologicalSorter(
            {folder: others - {folder} for folder, others in allowed.items()}
        ).prepare()
    except graphlib.CycleError as circle:
        faults += 1
        print("a circle of folders:", *circle.args[1])
    sys.exit(1 if faults else 0)


main(pathlib.Path(sys.argv[1]), sys.argv[2])
