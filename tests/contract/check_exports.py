#!/usr/bin/env python3
"""Checks that the library exports the functions that its DEF files list and its headers declare.

Usage: check_exports.py LIBRARY (DEF HEADER)...
"""
import re
import subprocess
import sys


def listed(path):
    with open(path, encoding="utf-8") as file:
        return set(file.read().partition("EXPORTS")[2].split())


def declared(path):
    with open(path, encoding="utf-8") as file:
        code = re.sub(r"/\*.*?\*/", "", file.read(), flags=re.DOTALL)
    return set(re.findall(r"^\w+_API [\w *]+[ *](\w+)\(", code, flags=re.MULTILINE))


def exported(path):
    lines = subprocess.run(["nm", "-D", "--defined-only", path], check=True, text=True,
                           capture_output=True).stdout.splitlines()
    return {line.split()[-1] for line in lines}


def compare(what, names, expected):
    for name in sorted(names ^ expected):
        print("%s %s %s" % (what, "has also" if name in names else "lacks", name))
    return names == expected


def main():
    library, pairs = sys.argv[1], list(zip(sys.argv[2::2], sys.argv[3::2]))
    same = [compare(header, declared(header), listed(definition)) for definition, header in pairs]
    names = set().union(*(listed(definition) for definition, _ in pairs))
    same.append(compare(library, exported(library), names))
    print("%d names" % len(names))
    return 0 if all(same) and names else 1


if __name__ == "__main__":
    sys.exit(main())
