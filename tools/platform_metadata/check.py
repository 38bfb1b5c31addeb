#!/usr/bin/env python3
"""Compares the table of the runtime's binary interface, and the declarations in src/platform/abi,
with the platform's official metadata and C headers.

Usage: check.py PACKAGES TOOL BUILD

PACKAGES is NuGet's directory of packages, TOOL the built platform_metadata.dll, BUILD a directory for
generated files. Prints the number of facts compared; exits with 1 when any differs or a fault that
planted.py plants is not found.
"""
import pathlib
import subprocess
import sys
import xml.etree.ElementTree

import facts
from compiler import read_compiler
from declared import Declared
from headers import read_headers
from planted import check_planted
from table import Table

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1]


def packages(root):
    """Returns the directory of each NuGet package; the build has verified the packages' hashes."""
    folders = {}
    for project in ("platform_metadata.csproj", "projection.props"):
        for item in xml.etree.ElementTree.parse(HERE / project).iter("PackageDownload"):
            name = item.get("Include")
            folders[name] = root / name / item.get("Version").strip("[]")
    return folders


def read_metadata(tool, folder, declared, build):
    names = dict.fromkeys([*declared.subjects(), *(sorted(declared.generic))])
    printed = subprocess.run(["dotnet", tool, folder], input="\n".join(names), check=True,
                             stdout=subprocess.PIPE, encoding="utf-8").stdout
    (build / "metadata.tsv").write_text(printed, encoding="utf-8")
    return facts.read(printed.splitlines())


def main():
    root, tool, build = map(pathlib.Path, sys.argv[1:])
    folders = packages(root)
    declared = Declared(SOURCE / "src/platform/abi")
    table = SOURCE / "tests/abi/windows_runtime.tsv"
    include, = (folders["microsoft.windows.sdk.cpp"] / "c/Include").iterdir()
    official = {
        "metadata": read_metadata(
            tool, folders["microsoft.windows.sdk.net.ref"] / "winmd", declared, build),
        "headers": read_headers(include, declared, build)}
    read_table = Table(table)
    sources = {"table": read_table.facts,
               "table's operations": read_table.operations,
               "compiler": read_compiler(declared, SOURCE / "src", build)}
    faults, compared = [], 0
    for name, source in sources.items():
        counts, differences = facts.compare(name, source, official)
        faults += differences
        compared += sum(counts.values())
        print(f"{name}: {len(source)} facts, {counts['metadata']} of them in the metadata, "
              f"{counts['headers']} in the headers, {len(differences)} differences")
    print(f"{compared} facts compared, {len(faults)} differences")
    if not faults:
        faults = check_planted(table, declared, official, build)
        print(f"4 faults planted in the table and 4 in the headers: {len(faults)} not found")
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
