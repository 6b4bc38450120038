#!/usr/bin/env python3
"""Makes the documents' pictures that Graphviz draws, or checks that they are up to date.

    graphs.py write ROOT ROOMS
    graphs.py check ROOT ROOMS

ROOT is the top of the sources, ROOMS the list of targets that the build writes for the test of the
arrows: the folders of src/ and what they link become rooms.dot. Each .svg in docs/pictures that has
a .dot beside it carries the digest of that source, so that the check needs no Graphviz. It also
looks for the functions ("name()") and folders ("name/") of which the sources speak, and for the
lines that oled.md quotes from its example.
"""

import hashlib
import pathlib
import re
import subprocess
import sys

HEAD = """// Made by the build: the folders of src/ and what they include from. What follows from others
// is left out.
digraph rooms {
    bgcolor="#fcfcfa"; nodesep=0.35; ranksep=0.4
    node [shape=box style="rounded,filled" fillcolor="#eef3f8" color="#6b7f95"
          fontname="DejaVu Sans,sans-serif" fontsize=11]
    edge [color="#555555" arrowsize=0.8]
"""


def rooms_graph(root, rooms):
    linked = {}
    for line in rooms.read_text().splitlines():
        folder, _, *libraries = line.split()
        folder = pathlib.Path(folder).relative_to(root)
        if folder.parent.name == "src":
            names = {library.partition("::")[2] for library in libraries if "renewer::" in library}
            linked.setdefault(folder.name, set()).update(names - {folder.name})

    def reach(folder):
        return linked[folder].union(*(reach(other) for other in linked[folder]))

    lines = [f"    {folder}\n" for folder in sorted(linked)]
    for folder in sorted(linked):
        through_others = set().union(*(reach(other) for other in linked[folder]))
        lines += [f"    {folder} -> {other}\n" for other in sorted(linked[folder] - through_others)]
    return HEAD + "".join(lines) + "}\n"


def digest_line(source):
    digest = hashlib.sha256(source.read_bytes()).hexdigest()
    return f"<!-- made from {source.name}, sha256 {digest} -->"


def write(pictures):
    for source in sorted(pictures.glob("*.dot")):
        drawn = subprocess.run(["dot", "-Tsvg", source], check=True, stdout=subprocess.PIPE)
        start = drawn.stdout.index(b"<svg")
        text = digest_line(source) + "\n" + drawn.stdout[start:].decode()
        source.with_suffix(".svg").write_text(text, encoding="utf-8")


def complaints(root, pictures, graph):
    if (pictures / "rooms.dot").read_text() != graph:
        yield "rooms.dot is not what the build links"
    code = "".join(file.read_text() for file in (root / "src").rglob("*.cpp"))
    for source in sorted(pictures.glob("*.dot")):
        drawn = source.with_suffix(".svg").read_text(encoding="utf-8")
        if not drawn.startswith(digest_line(source)):
            yield f"{source.stem}.svg is not made from {source.name} as it is: ./dev pictures"
        text = source.read_text(encoding="utf-8").replace("\\n", " ")
        for name in re.findall(r"(\w+)\([A-Z_]*\)", text):
            if not re.search(rf"\b{name}\(", code):
                yield f"{source.name}: src/ has no {name}()"
        for name in re.findall(r"(?:\w+/)+(?=\")", text):
            if not (root / name).is_dir():
                yield f"{source.name}: there is no {name}"
    example = (root / "examples/oled_hello.cpp").read_text(encoding="utf-8")
    document = (root / "docs/oled.md").read_text(encoding="utf-8")
    for quoted in re.findall("^```cpp\n(.*?)^```$", document, re.DOTALL | re.MULTILINE):
        if quoted not in example:
            yield f"oled.md quotes what oled_hello.cpp does not have:\n{quoted}"


def main(task, root, rooms):
    root, rooms = pathlib.Path(root), pathlib.Path(rooms)
    pictures = root / "docs/pictures"
    graph = rooms_graph(root, rooms)
    if task == "write":
        (pictures / "rooms.dot").write_text(graph)
        write(pictures)
    elif task == "check":
        sys.exit("\n".join(complaints(root, pictures, graph)) or 0)
    else:
        sys.exit(__doc__)


main(*sys.argv[1:])
