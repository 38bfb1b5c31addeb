#!/usr/bin/env python3
"""Checks that tools/check_truths finds each kind of entry that docs/windows_truths.md can lack.

Usage: check_truths_test.py CHECK SOURCE FOLDER
"""
import pathlib
import shutil
import subprocess
import sys

DOCUMENT, TESTS = "docs/windows_truths.md", "tests/scenarios/truths_test.cpp"
GAPS = [
    (DOCUMENT, "`flood`", "`flod`", [
        "truth without a scenario: Notifications that the host does not receive",
        "scenario without a truth: flood"]),
    (DOCUMENT, "**What the host should do.** The host regularly", "The host regularly",
     ["truth without **What the host should do.**: A device that disappears"]),
    (DOCUMENT, ": `quiet_device`", ": `noisy`",
     ["truth without a check of orv doctor: Notifications that the host does not receive (noisy)"]),
    (TESTS, '{"cut_name",', '{"cut",', ["scenario without a test: cut_name"]),
]


def main():
    check, source, folder = (pathlib.Path(argument) for argument in sys.argv[1:])
    for file, old, new, gaps in GAPS:
        shutil.rmtree(folder, ignore_errors=True)
        for part in ("docs", "scenarios", "tests/scenarios", "orv/doctor"):
            shutil.copytree(source / part, folder / part)
        text = (folder / file).read_text(encoding="utf-8")
        (folder / file).write_text(text.replace(old, new), encoding="utf-8")
        run = subprocess.run([sys.executable, check, folder], text=True, capture_output=True)
        if run.returncode != 1 or run.stdout.splitlines() != ["%s: %s" % (DOCUMENT, gap)
                                                              for gap in gaps]:
            print("%s: found %s%s" % (new, run.stdout, run.stderr))
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
