"""Compiles and runs a program that prints the slots, sizes and values in src/platform/abi."""
import pathlib
import re
import subprocess

import facts

HERE = pathlib.Path(__file__).resolve().parent
TESTS = HERE.parents[1] / "tests"

FUNDAMENTAL = {"unsigned char": "BYTE", "short int": "INT16", "short unsigned int": "UINT16",
               "int": "INT32", "unsigned int": "UINT32", "long int": "INT64",
               "long unsigned int": "UINT64", "float": "FLOAT", "double": "DOUBLE",
               "HSTRING__*": "HSTRING"}


def platform_types(text):
    text = text.replace("orv::", "").replace("HSTRING__*", "HSTRING")
    return re.sub(r"(?:\b(?:unsigned|long|short|int|char|float|double)\b ?)+",
                  lambda words: FUNDAMENTAL[words.group().strip()], text)


def program(declared):
    lines = []
    for name, members in declared.interfaces():
        lines.append(f'Table<{name}>("{name}");')
        lines += [f'orv::Slot("{name}", "{member}", &{name}::{member});' for member in members]
    for name in declared.classes:
        lines.append(f'Text("{name}", "default interface", TypeText<{name}::DefaultInterface>());')
    lines += [f'Class("{name}", {name}::Name);' for name in declared.named_classes]
    for name, values in declared.enumerations.items():
        lines.append(f'Text("{name}", "type", TypeText<std::underlying_type_t<{name}>>());')
        lines.append(f'Number("{name}", "size", sizeof({name}));')
        lines += [f'Number("{name}", "value {value}", static_cast<long long>({name}::{value}));'
                  for value in values]
    for name, fields in declared.structures.items():
        lines.append(f'Number("{name}", "size", sizeof({name}));')
        lines += [f'Text("{name}", "fields", TypeText<decltype({name}::{fields[0]})>());'
                  for _ in fields[:1] if len(fields) == 1]
    lines += [f'Number("{code}", "code", {code});' for code in declared.codes]
    headers = [path.name for path in declared.headers] + ["print_facts.h"]
    includes = [f'#include "{name}"' for name in headers]
    return "\n".join(includes + ["using namespace orv;", "int main() {"] + lines + ["}", ""])


def assumed(declared):
    """Returns a fact that the library assumes: each class is agile, so any thread may use its objects."""
    return {(name, "agile"): "yes" for name in declared.classes}


def used_factories(sources):
    found = {}
    for path in sources.rglob("*.cpp"):
        text = path.read_text(encoding="utf-8")
        for name, interface in re.findall(r"FactoryOf<(\w+),\s*(\w+)>", text):
            found[interface, "statics of"] = name
        for name in re.findall(r"\bActivate<(\w+)>", text):
            found[name, "made by IActivationFactory"] = "yes"
    return found


def read_compiler(declared, sources, build):
    build.mkdir(parents=True, exist_ok=True)
    source = build / "compiler_facts.cpp"
    source.write_text(program(declared), encoding="utf-8")
    # The headers include each other by their path in src/.
    folders = declared.folder, declared.folder.parents[1], HERE, TESTS
    subprocess.run(["g++", "-std=c++17", "-O0", *(f"-I{folder}" for folder in folders), source,
                    "-o", build / "compiler_facts"], check=True)
    printed = subprocess.run([build / "compiler_facts"], check=True, capture_output=True,
                             encoding="utf-8").stdout
    lines = []
    for line in printed.splitlines():
        subject, aspect, value = line.split("\t")
        if aspect.startswith("parameters"):
            value = value[value.index(")(") + 2:-1]
        if aspect.split()[0] in ("parameters", "fields", "default", "type"):
            value = platform_types(value)
        lines.append("\t".join((subject, aspect, value)))
    return {**facts.read(lines), **assumed(declared), **used_factories(sources)}
