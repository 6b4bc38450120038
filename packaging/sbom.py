#!/usr/bin/python3
"""Prints what a release is made of, as SPDX 2.3 (JSON).

usage: sbom.py VERSION EPOCH FILE...
"""
import datetime
import hashlib
import json
import pathlib
import sys

# What is linked into programs or made from it, and on what terms; docs/third-party.md says how.
PARTS = [
    (
        "libmd",
        "BSD-3-Clause AND BSD-2-Clause AND ISC AND Beerware",
        "DYNAMIC_LINK",
        "MD5 of packages: renewer-pack and applications, not the updater",
    ),
    (
        "libsodium",
        "ISC",
        "DYNAMIC_LINK",
        "signatures: renewer-pack and applications, not the updater",
    ),
    ("CLI11", "BSD-3-Clause", "STATIC_LINK", "options of renewer-pack and renewer-desk"),
    ("nlohmann-json", "MIT", "STATIC_LINK", "JSON of renewer-pack and renewer-desk"),
    ("yaml-cpp", "MIT", "DYNAMIC_LINK", "unit descriptions of renewer-desk"),
    ("ctemplate", "BSD-3-Clause", "DYNAMIC_LINK", "report of renewer-desk"),
    ("cpp-httplib", "MIT", "DYNAMIC_LINK", "front-panel page of renewer-desk"),
    ("libpng", "libpng-2.0", "DYNAMIC_LINK", "pictures of renewer-desk"),
    ("DejaVu fonts", "Bitstream-Vera", "GENERATED_FROM", "text in the updater's built-in pictures"),
    (
        "GNU Unifont",
        "OFL-1.1 OR GPL-2.0-or-later WITH Font-exception-2.0",
        "GENERATED_FROM",
        "glyph tables of the OLED library",
    ),
]


def package(name, terms, comment, **more):
    return {
        "SPDXID": "SPDXRef-" + "".join(c if c.isalnum() else "-" for c in name),
        "name": name,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": terms,
        "licenseDeclared": terms,
        "copyrightText": "NOASSERTION",
        "comment": comment,
        **more,
    }


def main(version, epoch, *names):
    made = datetime.datetime.fromtimestamp(int(epoch), datetime.timezone.utc)
    renewer = package("renewer", "MIT", "on-device firmware updater", versionInfo=version)
    parts = [package(name, terms, comment) for name, terms, _, comment in PARTS]
    files = []
    for path in map(pathlib.Path, names):
        content = path.read_bytes()
        files.append(
            {
                "SPDXID": f"SPDXRef-File-{len(files)}",
                "fileName": path.name,
                "licenseConcluded": "NOASSERTION",
                "copyrightText": "NOASSERTION",
                "checksums": [
                    {
                        "algorithm": algorithm.upper(),
                        "checksumValue": hashlib.new(algorithm, content).hexdigest(),
                    }
                    for algorithm in ("sha1", "sha256")
                ],
            }
        )
    digest = hashlib.sha256(json.dumps(files).encode()).hexdigest()
    relations = [("SPDXRef-DOCUMENT", "DESCRIBES", renewer)]
    relations += [(renewer["SPDXID"], kind, part) for (_, _, kind, _), part in zip(PARTS, parts)]
    relations += [(file["SPDXID"], "GENERATED_FROM", renewer) for file in files]
    json.dump(
        {
            "spdxVersion": "SPDX-2.3",
            "dataLicense": "CC0-1.0",
            "SPDXID": "SPDXRef-DOCUMENT",
            "name": f"renewer-{version}",
            "documentNamespace": f"https://renewer.example/spdx/{version}/{digest}",
            "creationInfo": {
                "created": made.strftime("%Y-%m-%dT%H:%M:%SZ"),
                "creators": ["Organization: the renewer authors"],
            },
            "packages": [renewer, *parts],
            "files": files,
            "relationships": [
                {
                    "spdxElementId": one,
                    "relationshipType": kind,
                    "relatedSpdxElement": other["SPDXID"],
                }
                for one, kind, other in relations
            ],
        },
        sys.stdout,
        indent=2,
    )
    print()


main(*sys.argv[1:])
