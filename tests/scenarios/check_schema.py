#!/usr/bin/env python3
"""Checks that the scenarios match their schema, that schema and library have the same fields, and that
the library plays the example in docs/simulated_world.md.

Usage: check_schema.py SCENARIOS LIBRARY FILE
"""
import ctypes
import json
import pathlib
import re
import sys

import jsonschema

# For each kind of object, a scenario with an unknown field. The error text lists the known fields.
PROBES = {
    "radio": {"radios": [{"no": 0}]},
    "machineAnswer": {"answers": [{"no": 0}]},
    "device": {"devices": [{"no": 0}]},
    "deviceAnswer": {"devices": [{"address": "00:00:00:00:00:01", "answers": [{"no": 0}]}]},
    "fault": {"faults": [{"no": 0}]},
    "event": {"events": [{"no": 0}]},
}


def known_fields(library, file, probe):
    file.write_text(json.dumps({"title": "", **probe}), encoding="utf-8")
    error = ctypes.create_string_buffer(1000)
    library.OrvWorld_PlayScenario(str(file).encode(), 1, error, len(error))
    return re.search("unknown here, one of (.*) would be right", error.value.decode()).group(1)


def faults(folder, library, file):
    schema = json.loads((folder / "scenario.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    for path in sorted(folder.glob("*.json")):
        if path.name != "scenario.schema.json":
            scenario = json.loads(path.read_text(encoding="utf-8"))
            yield from ("%s: %s" % (path.name, error) for error in validator.iter_errors(scenario))
    document = (folder.parent / "docs/simulated_world.md").read_text(encoding="utf-8")
    example = re.search("```json\n(.*?)```", document, re.DOTALL).group(1)
    file.write_text(example, encoding="utf-8")
    if library.OrvWorld_PlayScenario(str(file).encode(), 1, None, 0) != 0:
        yield "docs/simulated_world.md: its example is refused"
    for kind, probe in {"": {"no": 0}, **PROBES}.items():
        described = schema["definitions"][kind] if kind else schema
        known = set(known_fields(library, file, probe).split(", "))
        if known != set(described["properties"]):
            yield "%s: differs in %s" % (kind, known ^ set(described["properties"]))


def main():
    folder, library, file = (pathlib.Path(argument) for argument in sys.argv[1:])
    found = list(faults(folder, ctypes.CDLL(str(library)), file))
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
