"""Runs a table of command lines of renewer-pack: pack_table.py PROGRAM SCHEMA TABLE...

$ LINE        a line for the shell, which must succeed
N ARGUMENTS   renewer-pack with these arguments must end with status N. Behind them, apart by two
              blanks, what it must print: "| text" on standard output, "! text" on standard error,
              "= text" on standard output and nothing else, with \\n for the end of a line.

What is not said to be on standard error must not be there; each line there begins with the
program's name. A JSON document must be as the schema says. Each table has a directory of its own.
"""

import json
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile

import jsonschema

MOST_MEMORY = 600_000  # KiB, whatever a file claims

SHELL = r"""
texts='--version 1.1.4.0 --pn 101356340012 --revision 1a2b3c4d'
export SOURCE_DATE_EPOCH=1716455101                      # 23 May 2024, 09:05:01
# patch FROM TO OFFSET BYTES: a copy with other bytes, as printf writes them
patch() { cp "$1" "$2" && printf "$4" | dd of="$2" bs=1 seek="$3" conv=notrunc status=none; }
# other FROM TO OFFSET: a copy with another letter or digit there, whatever it was
other() { patch "$@" "$(tail -c +$(($3 + 1)) "$1" | head -c 1 | tr 'A-Za-z0-9+/' 'B-ZAb-za1-90AA')"; }
# bytes: of the hexadecimal digits that it reads
bytes() { python3 -c 'import sys; sys.stdout.buffer.write(bytes.fromhex(sys.stdin.read()))'; }
# old FILE VERSION DIGITS [NODES]: a package of the old layout
old() { python3 - "$@" <<'PYTHON'
import hashlib, struct, sys
name, version, digits, nodes = (sys.argv[1:] + [""])[:4]
pn = bytes.fromhex(digits.ljust(32, "0"))
rest = struct.pack("<I16s5I", int(version, 0), pn, len(digits), 2024 << 9 | 5 << 5 | 23,
                   9 << 13 | 5 << 6 | 1, 0, len(nodes) // 24) + bytes.fromhex(nodes)
open(name, "wb").write(b"\0\x77\0\x77" + hashlib.md5(rest).digest() + rest)
PYTHON
}
"""


def complaints(row, schema):
    """What is wrong with the outcome of one row."""
    kind, line = row.split(" ", 1)
    parts = re.split(r"  +([|!=]) ", line)
    command = parts[0] if kind == "$" else "renewer-pack " + parts[0]
    if kind == "$":
        command = line
    done = subprocess.run(
        ["bash", "-c", SHELL + command],
        capture_output=True,
        check=False,
        stdin=subprocess.DEVNULL,
        timeout=100,
    )
    out, err = done.stdout.decode(errors="replace"), done.stderr.decode(errors="replace")
    if kind == "$":
        if done.returncode != 0:
            yield f"ended with {done.returncode}: {out}{err}"
        return
    if done.returncode != int(kind):
        yield f"ended with {done.returncode}"
    wanted = list(zip(parts[1::2], (part.replace("\\n", "\n") for part in parts[2::2])))
    for mark, text in wanted:
        if mark == "=" and text != out or mark == "|" and text not in out:
            yield "printed " + repr(out)
        if mark == "!" and text not in err:
            yield "complained " + repr(err)
    marks = [mark for mark, _ in wanted]
    if err and "!" not in marks:
        yield "complained " + repr(err)
    if any(not part.startswith("renewer-pack: ") for part in err.splitlines()):
        yield "complained without its name: " + repr(err)
    if out and kind in "23" and not {"|", "="} & set(marks):
        yield "printed " + repr(out)
    if " --json" in parts[0] and out:
        jsonschema.validate(json.loads(out), schema)


def run(table, schema):
    failures = 0
    with open(table, encoding="utf-8") as rows, tempfile.TemporaryDirectory() as here:
        os.chdir(here)
        for number, row in enumerate(rows, 1):
            if row.strip() and not row.startswith("#"):
                for complaint in complaints(row.rstrip("\n"), schema):
                    print(f"{table}:{number}: {row}    {complaint}")
                    failures += 1
        os.chdir("/")
    most = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    if most > MOST_MEMORY:
        print(f"{table}: a command took {most} KiB of memory")
        failures += 1
    return failures


def main():
    program, schema = os.path.abspath(sys.argv[1]), json.load(open(sys.argv[2], encoding="utf-8"))
    os.environ["PATH"] = os.path.dirname(program) + ":" + os.environ["PATH"]
    os.umask(0o022)
    for sent in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
        signal.signal(sent, signal.SIG_DFL)  # the starter may ignore what rows send
    tables = [os.path.abspath(table) for table in sys.argv[3:]]
    sys.exit(1 if sum(run(table, schema) for table in tables) else 0)


main()
