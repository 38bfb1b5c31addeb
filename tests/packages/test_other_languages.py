"""Compiles and runs the examples of docs/other_languages.md with its commands."""
import os
import pathlib
import re
import shutil
import subprocess

import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
TEXT = (SOURCE / "docs/other_languages.md").read_text(encoding="utf-8")
COMMANDS = [line for block in re.findall(r"```sh\n(.*?)```", TEXT, re.DOTALL) for line in block.splitlines()]


@pytest.mark.parametrize("command", COMMANDS, ids=lambda command: re.sub(r"^(\w+=\S+ )*(\S+).*", r"\2", command))
def test_scan(command, tmp_path):
    if command.startswith("dotnet") and not shutil.which("dotnet"):
        pytest.skip("there is no .NET SDK")
    for name, code in re.findall(r"`([\w.]+)`:\n\n```\w+\n(.*?)```", TEXT, re.DOTALL):
        (tmp_path / name).write_text(code, encoding="utf-8")
    library = tmp_path / "library"  # the library writes its log here
    library.mkdir()
    shutil.copy(os.environ["ORV_LIBRARY"], library)
    result = subprocess.run(command, shell=True, cwd=tmp_path, text=True, capture_output=True, timeout=600, env={
        **os.environ, "LIBRARY": str(library), "INCLUDE": str(SOURCE / "include"),
        "DOTNET_CLI_TELEMETRY_OPTOUT": "1", "DOTNET_NOLOGO": "1", "MSBUILDDISABLENODEREUSE": "1"})
    assert result.returncode == 0, result.stdout + result.stderr
    assert re.search(r"^A0B1C2D3E4F5 ORV-0042 -\d+ dBm$", result.stdout, re.MULTILINE), result.stdout


def test_every_program_has_its_command():
    assert len(COMMANDS) == 5
