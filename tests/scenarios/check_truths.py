#!/usr/bin/env python3
"""Every truth of docs/windows_truths.md has its scenario, and every scenario its truth and its test.

Usage: check_truths.py SOURCE
"""
import pathlib
import re
import sys

PARTS = ("**What happens.**", "**The library.**", "**The host.**")


def faults(source):
    files = {path.stem for path in (source / "scenarios").glob("*.json")} - {"scenario.schema"}
    tests = "".join(path.read_text(encoding="utf-8")
                    for path in sorted((source / "tests/scenarios").glob("*.cpp")))
    text = (source / "docs/windows_truths.md").read_text(encoding="utf-8")
    truths = set()
    for section in text.split("\n## ")[1:]:
        title = section.partition("\n")[0]
        named = re.findall(r"^Scenario: `(\w+)`$", section, re.MULTILINE)
        if len(named) != 1 or named[0] not in files:
            yield "truth without a scenario: %s" % title
        truths.update(named)
        for part in PARTS:
            if part not in section:
                yield "truth without %s: %s" % (part, title)
    for name in sorted(files - truths - {"default"}):
        yield "scenario without a truth: %s" % name
    for name in sorted(files):
        if not re.search(r'\{"%s",|Play\("%s"\)|"%s\.json"' % (name, name, name), tests):
            yield "scenario without a test: %s" % name
    if not truths:
        yield "no truths"


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    for fault in found:
        print("docs/windows_truths.md: " + fault)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
