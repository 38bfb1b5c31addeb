#!/usr/bin/env python3
"""Repacks a NuGet package reproducibly, because `dotnet pack` writes times and a random name.

Usage: nuget.py PACKED TARGET
"""
import re
import sys
import zipfile

import pack


def main():
    with zipfile.ZipFile(sys.argv[1]) as archive:
        files = {name: archive.read(name) for name in archive.namelist()}
    properties = next(name for name in files if name.endswith(".psmdcp"))
    fixed = "package/services/metadata/core-properties/quelvixwinlib.psmdcp"
    files[fixed] = files.pop(properties)
    relations = files["_rels/.rels"].decode("utf-8-sig").replace(properties, fixed)
    numbers = iter(range(1, 100))
    files["_rels/.rels"] = re.sub(r'Id="\w+"', lambda _: 'Id="R%d"' % next(numbers), relations).encode()
    pack.write(sys.argv[2], files)


if __name__ == "__main__":
    main()
