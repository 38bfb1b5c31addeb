#!/usr/bin/env python3
"""Builds and runs the programs in a document with the commands in the document.

Usage: run_document.py SOURCE DOCUMENT LIBRARY FOLDER ATTEMPTS EXPECTED...

A program is a code block after its file name, such as `host.c`; a command is a line of an sh block.
LIBRARY is copied to build/demo/simulated, where the commands expect it. Each command runs up to
ATTEMPTS times, until it succeeds and prints text that matches the EXPECTED at the same position.
"""
import pathlib
import re
import shutil
import subprocess
import sys

STRICT = {".c": "cc -std=c99", ".cpp": "c++ -std=c++17"}


def prepare(source, text, library, folder):
    shutil.rmtree(folder, ignore_errors=True)
    libraries = folder / "build/demo/simulated"
    libraries.mkdir(parents=True)
    shutil.copy(library, libraries)
    for part in ("include", "scenarios"):
        (folder / part).symlink_to(source / part)
    programs = re.findall(r"`(\w+\.(?:c|cpp|py))`:\n\n```\w+\n(.*?)```", text, re.DOTALL)
    for name, code in programs:
        (folder / name).write_text(code, encoding="utf-8")
    return [pathlib.Path(name) for name, _ in programs]


def main():
    source, document, library, folder = (pathlib.Path(argument) for argument in sys.argv[1:5])
    attempts, expected = int(sys.argv[5]), sys.argv[6:]
    text = document.read_text(encoding="utf-8")
    programs = prepare(source, text, library, folder)
    commands = "".join(re.findall(r"```sh\n(.*?)```", text, re.DOTALL)).splitlines()
    if not len(programs) == len(commands) == len(expected):
        print("%d programs, %d commands" % (len(programs), len(commands)))
        return 1

    def run(line):
        result = subprocess.run(line, shell=True, cwd=folder, text=True, capture_output=True)
        print("%s\n%s%s" % (line, result.stdout, result.stderr), flush=True)
        return result

    def shows(command, pattern):
        shown = run(command)
        return shown.returncode == 0 and re.search(pattern, shown.stdout)

    for program in programs:
        if program.suffix in STRICT and run("%s -Wall -Wextra -Wpedantic -Werror -fsyntax-only "
                                            "-Iinclude %s" % (STRICT[program.suffix], program)
                                            ).returncode != 0:
            return 1
    for command, pattern in zip(commands, expected):
        if not any(shows(command, pattern) for _ in range(attempts)):
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
