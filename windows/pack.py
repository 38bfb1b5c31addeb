#!/usr/bin/env python3
"""Packs files into a ZIP whose bytes depend on nothing but theirs: sorted, without times.

Usage: pack.py ZIP (NAME=FILE)...
"""
import sys
import zipfile


def main():
    target, *entries = sys.argv[1:]
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name, path in sorted(entry.split("=", 1) for entry in entries):
            info = zipfile.ZipInfo(name, date_time=(1980, 1, 1, 0, 0, 0))
            info.create_system = 3
            info.external_attr = 0o644 << 16
            info.compress_type = zipfile.ZIP_DEFLATED
            with open(path, "rb") as file:
                archive.writestr(info, file.read())


if __name__ == "__main__":
    main()
