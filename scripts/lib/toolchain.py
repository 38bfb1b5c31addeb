#!/usr/bin/env python3
"""Prints the compiler and the flags of a build directory.

Usage: toolchain.py DIRECTORY
"""
import json
import shlex
import subprocess
import sys


def main():
    with open(sys.argv[1] + "/compile_commands.json", encoding="utf-8") as file:
        entry = next(entry for entry in json.load(file) if "/src/" in entry["file"])
    command = shlex.split(entry["command"])
    version = subprocess.run([command[0], "--version"], check=True, text=True,
                             capture_output=True).stdout.splitlines()[0]
    flags = [flag for flag in command[1:] if flag.startswith(("-O", "-g", "-D", "-W", "-f", "-std"))]
    print("%s\n%s" % (version, " ".join(flags)))


if __name__ == "__main__":
    main()
