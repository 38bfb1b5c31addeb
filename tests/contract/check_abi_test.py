#!/usr/bin/env python3
"""Checks that tools/check_abi finds a removed function, a moved field and a changed argument in the
layout file and, if abidiff is installed, in debug information.

Usage: check_abi_test.py CHECK_ABI LAYOUT INCLUDE FOLDER
"""
import importlib.machinery
import json
import pathlib
import re
import shutil
import subprocess
import sys

CHANGES = {  # the name that check_abi must print, and the change of the header (pattern, replacement)
    "OrvDevice_Flush": (r"QUELVIXWINLIB_API ResultCode OrvDevice_Flush\(BluetoothAddress address\);", ""),
    "OrvDevice_Send": (r"(OrvDevice_Send\(BluetoothAddress address, )int32_t", r"\1int64_t"),
    "DiscoveredDevice": (r"uint8_t value0500; ", "uint16_t value0500; "),
}


def main():
    layout, include, folder = sys.argv[2], pathlib.Path(sys.argv[3]), pathlib.Path(sys.argv[4])
    gate = importlib.machinery.SourceFileLoader("check_abi", sys.argv[1]).load_module()
    passed = True
    for name, (pattern, replacement) in CHANGES.items():
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(include, folder)
        header = folder / "quelvixwinlib.h"
        text = re.sub(r"^typedef char orv_check.*\n", "", header.read_text(encoding="utf-8"), flags=re.MULTILINE)
        changed = re.sub(pattern, replacement, text)
        header.write_text(changed, encoding="utf-8")
        headers = [header, folder / "quelvixwinlib_simulated.h"]
        described = subprocess.run([pathlib.Path(sys.argv[1]).with_name("layout"), *headers], check=True,
                                   capture_output=True, text=True).stdout
        (folder / "layout.json").write_text(described, encoding="utf-8")
        found = subprocess.run([sys.argv[1], "layout", folder / "layout.json"], capture_output=True, text=True)
        found = [found.stdout]
        if shutil.which("abidiff"):
            found += ["".join(gate.check_types(gate.build_stub(json.loads(described), folder, folder)))]
        if changed == text or not all(name in text for text in found):
            print("%s: not found\n%s" % (name, "\n".join(found)))
            passed = False
    # check_abi must allow an added function.
    grown = json.loads(pathlib.Path(layout).read_text(encoding="utf-8"))
    grown[0]["functions"].append({"name": "OrvNew", "result": "int32", "arguments": [], "comment": None})
    (folder / "layout.json").write_text(json.dumps(grown), encoding="utf-8")
    passed &= subprocess.run([sys.argv[1], "layout", folder / "layout.json"], check=False).returncode == 0
    return 0 if passed else 1


if __name__ == "__main__":
    sys.exit(main())
