#!/usr/bin/env python3
"""Checks that every code block in the documents is tested. This script plays JSON blocks as scenarios.
Other tests run the programs and commands of each DOCUMENT. Blocks marked `text` are not code.

Usage: code_blocks.py SOURCE LIBRARY DOCUMENT...
"""
import ctypes
import pathlib
import re
import sys
import tempfile


def play(library, text):
    error = ctypes.create_string_buffer(400)
    with tempfile.NamedTemporaryFile("w", suffix=".json", encoding="utf-8") as file:
        file.write(text)
        file.flush()
        result = library.OrvWorld_PlayScenario(file.name.encode(), 1, error, len(error))
    return "" if result == 0 else error.value.decode()


def faults(text, is_run, library):
    for found in re.finditer(r"([^\n]*)\n\n```(\w*)\n(.*?)```", text, re.DOTALL):
        before, language, code = found.group(1), found.group(2), found.group(3)
        if language == "json":
            fault = play(library, code)
        elif language == "text":
            fault = ""
        elif language == "sh":
            fault = "" if is_run else "no test runs this command"
        else:
            fault = "" if is_run and re.search(r"`[\w.]+`:$", before) else "no test runs this program"
        if fault:
            yield "%s: %s" % (fault, code.partition("\n")[0])


def main():
    source, library, run = pathlib.Path(sys.argv[1]), ctypes.CDLL(sys.argv[2]), set(sys.argv[3:])
    failed = blocks = 0
    documents = [*source.glob("*.md"), *source.glob("docs/*.md"), *source.glob("bindings/*/README.md")]
    for document in sorted(documents):
        text = document.read_text(encoding="utf-8")
        blocks += text.count("\n```") // 2
        name = document.relative_to(source).as_posix()
        for fault in faults(text, name in run, library):
            print("%s: %s" % (name, fault))
            failed = 1
    missing = [name for name in run if not (source / name).exists()]
    print("%d blocks in %d documents" % (blocks, len(documents)), *missing)
    return 1 if failed or missing or not blocks else 0


if __name__ == "__main__":
    sys.exit(main())
