#!/usr/bin/env python3
"""Makes the OLED's glyph tables, and checks the texts that are drawn with them.

usage: glyphs.py LISTS source HEX_FONT HEADER FILE
       glyphs.py LISTS check SOURCE...

"source" writes a C++ file that defines the tables as HEADER declares them, from the characters in
LISTS (the file explains its format) and a font of 16 rows in the .hex format: a code point, a colon
and the rows from the top in hexadecimal, 2 or 4 digits each. "check" reports the characters
in quoted texts of C++ files that are neither ASCII nor one of the ideographs, and fails if it finds
any.
"""

import pathlib
import re
import sys

from cpp_source import write_arrays

NARROW, WIDE, ROWS = 8, 16, 16
COUNTS = {"symbols": 32, "ideographs": 196, "repeats": 2, "signs": 1, "cyrillic": 66, "latin": 24}


def read_lists(path):
    """The characters of each part, as one text."""
    lists = dict.fromkeys(COUNTS, "")
    for line in path.read_text("utf-8").splitlines():
        if not line or line.startswith("#"):
            continue
        part, blank, characters = line.partition(" ")
        if part not in lists or not blank:
            raise ValueError(f'cannot parse "{line}"')
        for character in characters.rpartition(":")[2].replace(" ", ""):
            # Words share ideographs.
            if part != "ideographs" or character not in lists[part]:
                lists[part] += character
    for part, count in COUNTS.items():
        if len(lists[part]) != count:
            raise ValueError(f"{part}: {len(lists[part])} characters instead of {count}")
    for character in lists["ideographs"]:
        if not "\u4e00" <= character <= "\u9fa5":
            raise ValueError(f"{character} is no ideograph that a text may hold")
    for character in lists["repeats"]:
        if character not in lists["ideographs"]:
            raise ValueError(f"{character} repeats nothing")
    return lists


def read_font(path):
    """The hexadecimal digits of each character's rows."""
    font = {}
    for line in path.read_text("ascii").splitlines():
        parts = re.fullmatch("([0-9A-F]{4,6}):([0-9A-F]{32}|[0-9A-F]{64})", line)
        if not parts:
            raise ValueError(f'{path}: cannot parse "{line}"')
        font[chr(int(parts[1], 16))] = parts[2]
    return font


def rows_of(font, character):
    """The character's rows from the top, each a string of "0" and "1" from the left."""
    if character not in font:
        raise ValueError(f"the font has no glyph for {character}")
    width = len(font[character]) * 4 // ROWS
    pixels = f"{int(font[character], 16):0{width * ROWS}b}"
    return [pixels[i : i + width] for i in range(0, len(pixels), width)]


def cross(width):
    """Both diagonals of a cell."""
    columns = [row * width // ROWS for row in range(ROWS)]
    return ["".join("01"[x in (c, width - 1 - c)] for x in range(width)) for c in columns]


def cell(rows, width):
    """A byte for each column of the upper half, bit 0 topmost, then as many for the lower half."""
    if len(rows[0]) > width:
        raise ValueError("a glyph is too wide for its cell")
    columns = list(zip(*(row.center(width, "0") for row in rows)))  # a narrow glyph is centred
    halves = [column[top : top + 8] for top in (0, 8) for column in columns]
    return bytes(int("".join(reversed(half)), 2) for half in halves)


def entry(cell, character):
    """A cell with the character's UTF-8 bytes after it, in four bytes."""
    return cell + character.encode().ljust(4, b"\0")


def make_tables(lists, font):
    printable = "".join(map(chr, range(32, 127)))
    ascii_codes = lists["symbols"][:31] + printable + lists["symbols"][31]
    found = lists["ideographs"] + lists["repeats"]
    never_found = lists["signs"] + lists["cyrillic"]
    unused = bytes(2 * NARROW)
    space = entry(bytes(2 * WIDE), " ")

    def cells(characters):
        return b"".join(cell(rows_of(font, c), NARROW) for c in characters)

    def entries(characters, width):
        return b"".join(entry(cell(rows_of(font, c), width), c) for c in characters)

    return {
        "AsciiCharac": unused + cells(ascii_codes) + unused * 32 + b"\0",
        "ChineseCharac": entries(found, WIDE) + space + entries(never_found, WIDE),
        "ChineseNone": entry(cell(cross(WIDE), WIDE), ""),
        "RussianCharac": entries(lists["cyrillic"], NARROW),
        "RussianNone": entry(cell(cross(NARROW), NARROW), ""),
        "TurkeyCharacSpec": cells(lists["latin"]),
    }


def quoted_parts(line):
    """The text in double quotes on a line of C++, without its comment."""
    tokens = re.findall(r'//.*|"((?:\\.|[^"\\])*)"|\'(?:\\.|[^\'\\])*\'', line)
    return "".join(re.sub(r"\\.", "", text) for text in tokens)


def missing(lists, path):
    """A line for each character in the file's texts that the tables lack."""
    for number, line in enumerate(path.read_text("utf-8").splitlines(), 1):
        for character in quoted_parts(line):
            if not character.isascii() and character not in lists["ideographs"]:
                yield f"{path}:{number}: no glyph for {character} (U+{ord(character):04X})"


def main(arguments):
    match arguments:
        case [lists, "source", hex_font, header, file]:
            tables = make_tables(read_lists(pathlib.Path(lists)), read_font(pathlib.Path(hex_font)))
            arrays = {f"std::array<uint8_t, {len(d)}> {name}": d for name, d in tables.items()}
            write_arrays(file, header, arrays)
        case [lists, "check", *sources] if sources:
            lists = read_lists(pathlib.Path(lists))
            lines = [line for path in sources for line in missing(lists, pathlib.Path(path))]
            sys.exit("\n".join(lines) or 0)
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except (OSError, ValueError) as error:
        sys.exit(f"glyphs.py: {error}")
