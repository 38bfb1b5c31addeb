#!/usr/bin/env python3
"""Packs files into a reproducible ZIP: the files are sorted and have no times.

Usage: pack.py ZIP (NAME=FILE)...
"""
import pathlib
import sys
import zipfile


def write(target, files):
    """Writes a ZIP. `files` maps each name in the archive to its bytes."""
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name, data in sorted(files.items()):
            info = zipfile.ZipInfo(name, date_time=(1980, 1, 1, 0, 0, 0))
            info.create_system = 3
            info.external_attr = 0o644 << 16
            info.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(info, data)


def read_folder(folder):
    folder = pathlib.Path(folder)
    return {path.relative_to(folder).as_posix(): path.read_bytes()
            for path in folder.rglob("*") if path.is_file()}


def main():
    target, *entries = sys.argv[1:]
    write(target, {name: pathlib.Path(path).read_bytes()
                   for name, path in (entry.split("=", 1) for entry in entries)})


if __name__ == "__main__":
    main()
