#!/usr/bin/env python3
"""The scenarios are what their schema says.

Usage: check_schema.py FOLDER
"""
import json
import pathlib
import sys

import jsonschema


def main():
    folder = pathlib.Path(sys.argv[1])
    schema = json.loads((folder / "scenario.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    valid = True
    for path in sorted(folder.glob("*.json")):
        if path.name != "scenario.schema.json":
            for error in validator.iter_errors(json.loads(path.read_text(encoding="utf-8"))):
                print("%s: %s" % (path.name, error))
                valid = False
    # A schema that accepts everything would say the same.
    return 0 if valid and not validator.is_valid({"title": "", "devcies": []}) else 1


if __name__ == "__main__":
    sys.exit(main())
