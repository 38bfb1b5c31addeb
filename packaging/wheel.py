#!/usr/bin/env python3
"""Packs the Python binding with its native files into a wheel.

Usage: wheel.py VERSION NATIVE DIST

NATIVE contains the package's radio/ and simulated/, LICENSE and THIRD_PARTY_NOTICES.txt.
A wheel with a DLL is for Windows. A wheel with a shared library is for every Linux whose C library has the
symbols that the library needs. setuptools is not used, because it needs the network and writes times.
"""
import base64
import hashlib
import pathlib
import re
import subprocess
import sys

import pack

SOURCE = pathlib.Path(__file__).resolve().parent.parent / "bindings/python"
MODULE = "quelvixwinlib"


def tag(native):
    libraries = sorted(native.glob("*/libquelvixwinlib.so"))
    if not libraries:
        return "win_amd64"
    symbols = subprocess.run(["objdump", "-T", *libraries], check=True, capture_output=True, text=True).stdout
    minor = max(int(found) for found in re.findall(r"GLIBC_2\.(\d+)", symbols))
    return "manylinux_2_%d_x86_64" % minor


def metadata(version):
    project = (SOURCE / "pyproject.toml").read_text(encoding="utf-8")

    def value(name):
        return re.search(r'^%s = "(.*)"$' % name, project, re.MULTILINE).group(1)

    return ("Metadata-Version: 2.1\nName: %s\nVersion: %s\nSummary: %s\nAuthor: the quelvixwinlib authors\n"
            "License: MIT\nRequires-Python: %s\nDescription-Content-Type: text/markdown\n\n%s"
            % (value("name"), version, value("description"), value("requires-python"),
               (SOURCE / "README.md").read_text(encoding="utf-8")))


def main():
    version, native, dist = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    platform = tag(native)
    info = "%s-%s.dist-info/" % (MODULE, version)
    files = {MODULE + "/" + name: data for name, data in pack.read_folder(SOURCE / "src" / MODULE).items()
             if "__pycache__" not in name}
    for name, data in pack.read_folder(native).items():
        files[("%s/native/%s" if "/" in name else info + "%s") % (
            (MODULE, name) if "/" in name else name)] = data
    files[info + "METADATA"] = metadata(version).encode()
    files[info + "WHEEL"] = ("Wheel-Version: 1.0\nGenerator: quelvixwinlib\nRoot-Is-Purelib: false\n"
                             "Tag: py3-none-%s\n" % platform).encode()
    record = ["%s,sha256=%s,%d" % (name, base64.urlsafe_b64encode(hashlib.sha256(data).digest())
                                   .rstrip(b"=").decode(), len(data)) for name, data in sorted(files.items())]
    files[info + "RECORD"] = ("\n".join([*record, info + "RECORD,,"]) + "\n").encode()
    pack.write(dist / ("%s-%s-py3-none-%s.whl" % (MODULE, version, platform)), files)


if __name__ == "__main__":
    main()
