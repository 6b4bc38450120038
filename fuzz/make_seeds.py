#!/usr/bin/env python3
"""Writes a seed corpus for each fuzzer. usage: make_seeds.py DIRECTORY"""

import hashlib
import pathlib
import struct
import sys


def field(text, size):
    return text.encode().ljust(size, b"\0")


def sealed(package):
    return package[:4] + hashlib.md5(package[20:]).digest() + package[20:]


def table(contents, begin):
    """Node records, followed by the padded payloads, from offset `begin` on."""
    records, payloads = b"", b""
    begin += 12 * len(contents)
    for node_type, content in contents:
        records += struct.pack("<III", node_type, begin + len(payloads), len(content))
        payloads += content + b"\0" * (-len(content) % 4)
    return records + payloads


def new_package(contents, version="1.1.4.0", magic=0x77007703):
    text = version.encode() + b"\0"
    head_len = 100 + len(text)
    flag = 0
    for node_type, _ in contents:
        flag |= 1 << (node_type - (1 if node_type <= 28 else 2))
    head = struct.pack("<I16xIII", magic, head_len, 1, 12) + field("101356340012", 20)
    head += struct.pack("<I", len(text)) + field("1a2b3c4d", 9) + field("20240523", 11)
    head += field("09.05.01", 12) + struct.pack("<IQ", len(contents), flag)
    begin = (head_len + 3) // 4 * 4 + 4
    return sealed((head + text).ljust(begin, b"\0") + table(contents, begin))


def old_package(contents, digits, version=0x010203, flag=0):
    pn = bytes.fromhex(digits + "0" * (len(digits) % 2)).ljust(16, b"\0")
    date, time = 2024 << 9 | 5 << 5 | 23, 9 << 13 | 5 << 6 | 1
    head = struct.pack(
        "<I16xI16sIIIII", 0x77007700, version, pn, len(digits), date, time, flag, len(contents)
    )
    return sealed(head + table(contents, 60))


def packages():
    nodes = [(1, b"true\n"), (3, b"kernel!\n"), (31, b"the renewer")]
    yield "new", new_package(nodes)
    yield "new_long_version", new_package(nodes, "100.200.300.40")
    yield "new_second_magic", new_package(nodes, magic=0x77007701)
    yield "new_empty", new_package([])
    yield "new_all_types", new_package([(t, b"x") for t in range(1, 66) if t != 29])
    yield "new_odd", new_package(nodes) + b"\0"
    yield "old", old_package(nodes, "10135604001204")
    yield "old_with_flag", old_package(nodes, "10135604001204", flag=7)
    yield "old_empty", old_package([], "1013560")
    yield "short", old_package([], "1013560")[:56]


def units_with_candidates():
    name = b"def_t20240524.bin".ljust(60, b"_")
    for pn, digits in [
        ("1013563400120002", "10135604001204"),
        ("A113567834120000", "a1135601101204"),
        ("1013567834120000", "10135620062000"),
        ("1013567834120002", "10135630062000"),
        ("1013567884120000", "10135643462000"),
        ("1180000000000000", "11800000000004"),
    ]:
        record = (b"1234567" + pn.encode()).ljust(77, b"\0")
        yield pn, record + name + old_package([], digits) + old_package([], digits, 0x020010)


def picture(width, height, bits=24, fill=0):
    row = (width * bits // 8 + 3) // 4 * 4
    pixels = bytes(i * 37 % 251 for i in range(row * abs(height)))
    begin = 54 + fill
    head = b"BM" + struct.pack("<IHHI", begin + len(pixels), 0, 0, begin)
    head += struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, 0, len(pixels), 0, 0, 0, 0)
    return head + b"\0" * fill + pixels


def key_events(*events):
    return b"".join(
        struct.pack("<iiHHi", 100 + index, 0, 1, code, value)
        for index, (code, value) in enumerate(events)
    )


def main(directory):
    seeds = {
        "headers": packages(),
        "validators": packages(),
        "unpackers": packages(),
        "examine": packages(),
        "discovery": units_with_candidates(),
        "host_record": [
            ("usual", b"1234567" + b"1013563400120002"),
            ("empty", b""),
            ("long", b"1" * 200),
        ],
        "bmp": [
            ("usual", picture(4, 2)),
            ("padded", picture(5, 3)),
            ("deep", picture(3, 2, 32)),
            ("top_first", picture(4, -2)),
            ("far", picture(2, 2, fill=20)),
            ("shallow", picture(8, 2, 8)),
        ],
        "editions": [
            ("older", b"1.1.4\n1.1.10"),
            ("prefix", b"1.2\n1.2.1"),
            ("large", b"1.99999999999999999999\n1.-99999999999999999999"),
        ],
        "round_trip": [("usual", b"\1\1\4\0" + b"\1\5true\n" + b"\3\7kernel!" + b"\37\2me")],
        "texts": [
            ("ascii", b"\0" * 4 + b"\x80\0\x10\0" + b"\0" * 4 + b"GNSS 12:00"),
            ("mixed", b"\4\0\4\0" + b"\x40\0\x10\0" + b"\3\0\3\0" + "电量 60%".encode()),
        ],
        "grey_pictures": [("usual", picture(16, 8)), ("padded", picture(5, 3))],
        "keys": [
            ("press", key_events((2, 1), (0, 0), (2, 0))),
            ("held", key_events((8, 1), (8, 2), (8, 2), (8, 0), (7, 0))),
        ],
    }
    for fuzzer, inputs in seeds.items():
        corpus = pathlib.Path(directory) / fuzzer
        corpus.mkdir(parents=True, exist_ok=True)
        for name, content in inputs:
            (corpus / name).write_bytes(content)


if __name__ == "__main__":
    main(sys.argv[1])
