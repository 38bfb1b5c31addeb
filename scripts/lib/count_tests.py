#!/usr/bin/env python3
"""Prints how many tests passed and failed in a run of CTest: name, passed, failed.

Usage: count_tests.py NAME JUNIT_FILE

A program without GoogleTest counts as one test. Skipped tests do not count; their number is
printed to standard error.
"""
import re
import sys
import xml.etree.ElementTree


def count(case):
    """Returns how many tests passed, failed and were skipped in one entry of CTest."""
    output = case.findtext("system-out") or ""
    own = [sum(map(int, re.findall(r"^\[ *%s *\] (\d+) tests?[.,]" % state, output, re.MULTILINE)))
           for state in ("PASSED", "FAILED", "SKIPPED")]
    if case.get("status") != "run":  # the program crashed or printed no summary
        own[1] = max(own[1], 1)
    elif own[0] == 0 and own[2] == 0:
        own[0] = 1
    return own


def main():
    name, path = sys.argv[1:]
    try:
        cases = xml.etree.ElementTree.parse(path).getroot().iter("testcase")
        passed, failed, skipped = map(sum, zip(*map(count, cases)))
    except (OSError, ValueError, xml.etree.ElementTree.ParseError) as problem:
        print("%s: no results: %s" % (name, problem), file=sys.stderr)
        passed, failed, skipped = 0, 1, 0
    if skipped:
        print("%s: %d skipped" % (name, skipped), file=sys.stderr)
    print("%s\t%d\t%d" % (name, passed, failed))


if __name__ == "__main__":
    main()
