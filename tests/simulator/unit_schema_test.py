#!/usr/bin/python3
"""The schema of unit files has the fields that the desk accepts, and accepts the examples.

usage: unit_schema_test.py SCHEMA EXAMPLES DESK DOCUMENT
"""
import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema
import yaml

schema = json.loads(pathlib.Path(sys.argv[1]).read_text())
desk = sys.argv[3]


def fields_of_desk(prefix):
    """The fields that the desk lists in its message on an unknown one."""
    nested = "there_is_none: x"
    for name in reversed(prefix):
        nested = f"{name}: {{{nested}}}"
    with tempfile.NamedTemporaryFile("w", suffix=".yaml") as unit:
        unit.write(nested)
        unit.flush()
        message = subprocess.run(
            [desk, "run", "--unit", unit.name, "/dev/null"], capture_output=True, text=True
        ).stderr
    return set(message.strip().split("there are ")[1].split(", "))


properties = schema["properties"]
for prefix, known in [
    ((), properties),
    (("versions",), properties["versions"]["properties"]),
    (("application",), properties["application"]["properties"]),
    (("faults",), properties["faults"]["properties"]),
    (("faults", "disk_full"), properties["faults"]["properties"]["disk_full"]["properties"]),
    (("files", "/a"), properties["files"]["additionalProperties"]["properties"]),
    (("battery",), schema["definitions"]["supply"]["oneOf"][1]["properties"]),
]:
    if fields_of_desk(prefix) != set(known):
        sys.exit(f"{prefix}: the desk accepts {fields_of_desk(prefix)}, the schema {set(known)}")

jsonschema.Draft7Validator.check_schema(schema)
validator = jsonschema.Draft7Validator(schema)
examples = list(pathlib.Path(sys.argv[2]).glob("*.yaml"))
for file in examples:
    validator.validate(yaml.safe_load(file.read_text()))
document = pathlib.Path(sys.argv[4]).read_text()
validator.validate(yaml.safe_load(document.split("```yaml\n")[1].split("```")[0]))
wrong = ["batery: 6", "battery: full", "files: {a: x}", "keys: [start@1s]", "faults: [cut]"]
for text in wrong:
    if validator.is_valid(yaml.safe_load(text)):
        sys.exit(f"the schema accepts {text}")
if not examples:
    sys.exit("no examples")
