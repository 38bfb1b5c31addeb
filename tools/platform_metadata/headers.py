"""Reads facts from the official C headers: a C compiler computes slots, sizes and values; regular
expressions find parameter types and interface identifiers."""
import os
import re
import shutil
import subprocess

import facts

# The official headers to include; they include the other official headers.
INCLUDED = ("windows.h", "activation.h", "robuffer.h", "windows.devices.bluetooth.h",
            "windows.devices.bluetooth.advertisement.h",
            "windows.devices.bluetooth.genericattributeprofile.h", "windows.devices.enumeration.h",
            "windows.devices.radios.h", "windows.storage.streams.h")
# The headers to read facts from, including those of classic COM.
READ = INCLUDED[1:] + ("unknwnbase.h", "objidlbase.h", "inspectable.h", "asyncinfo.h",
                       "eventtoken.h", "windows.foundation.h", "windows.foundation.collections.h",
                       "windowscontracts.h")
# System headers of the official SDK. All other system headers are MinGW's.
CLASSIC = ("unknwn.h", "unknwnbase.h", "objidl.h", "objidlbase.h")
# Maps type names in the headers to the names that the extracted facts use.
TYPES = {"short": "INT16", "int": "INT32", "IID": "GUID", "REFIID": "GUID*", "byte": "BYTE"}
DELEGATES = ("AsyncOperationCompletedHandler", "TypedEventHandler")


def link_headers(root, folder):
    """Symlinks the official headers under each spelling in #include lines, because Windows ignores
    case in file names."""
    shutil.rmtree(folder, ignore_errors=True)  # an earlier run may have used another package
    folder.mkdir(parents=True)
    files = {path.name.lower(): path for path in (root / "winrt").glob("*.h")}
    files.update((path.name.lower(), path) for part in ("um", "shared")
                 for path in (root / part).glob("*.h") if path.name.lower() in CLASSIC)
    names = set(files)
    for path in (root / "winrt").glob("*.h"):
        names.update(re.findall(r'#include\s+[<"]([^>"]+)', path.read_text(encoding="latin-1")))
    for name in names:
        if name.lower() in files:
            os.symlink(files[name.lower()], folder / name)


def demangle(name):
    """Returns the C++ name of a type: Radio for __x_ABI_CWindows_CDevices_CRadios_CRadio."""
    if name.startswith("__x_ABI_C"):
        return name.split("_C")[-1]
    return instance(name)[0] if name.startswith("__F") else TYPES.get(name, name)


def instance(name):
    """Returns the type at the start of a name, such as
    __FIVectorView_1_Windows__CDevices__CRadios__CRadio, and the rest of the name."""
    match = re.match(r"__F(\w+?)_(\d)_", name)
    if not match:
        plain = re.match(r"[A-Za-z0-9]+(?:__C[A-Za-z0-9]+)*", name)
        last = plain.group().split("__C")[-1]
        return TYPES.get(last, last), name[plain.end():]
    generic, arguments, rest = match[1], [], name[match.end():]
    for _ in range(int(match[2])):
        argument, rest = instance(rest.removeprefix("_") if arguments else rest)
        arguments.append(argument)
    if generic[1:] in DELEGATES:
        generic = generic[1:]
    return f"{generic}<{','.join(arguments)}>", rest


def parameters(text):
    """Returns the types in a list of parameters, without names and annotations."""
    text = re.sub(r"/\*.*?\*/|\b(?:_[A-Z]\w*_|__RPC\w+)\b(?:\([^()]*\))?|\benum\b|\bstruct\b",
                  "", text).replace("unsigned __int32", "UINT32")
    types = [re.sub(r"\w+\s*$", "", part) for part in facts.split_list(text)]
    return facts.parameters(re.sub(r"\w+", lambda word: demangle(word.group()), part)
                            for part in types)


def read_tables(text, found):
    """Reads all vtables. Returns the members' names by the interface's C name."""
    text = re.sub(r"DECLSPEC_XFGVIRT\([^)]*\)", "", text)
    tables = {}
    for name, body in re.findall(r"typedef struct (\w+)Vtbl\s*\{(.*?)END_INTERFACE", text, re.S):
        tables[name] = []
        for member, listed in re.findall(
                r"STDMETHODCALLTYPE ?\* ?(\w+) ?\) ?\((.*?)\);", body, re.S):
            tables[name].append(member)
            # The first parameter is the object itself.
            found[demangle(name), "parameters " + member] = parameters(listed.partition(",")[2])
    return tables


def read_interfaces(text, found):
    """Reads interfaces' identifiers and bases from the headers' C++ part."""
    for iid, name, base in re.findall(
            r'MIDL_INTERFACE\("([^"]+)"\)\s*(\w+)(?: : public (\w+))?', text):
        found[name, "id"], found[name, "base"] = iid.lower(), base or "-"
    for iid, full in re.findall(r'__declspec\(uuid\("([^"]+)"\)\)\s*\w+<[^{]*\{[^{]*\{\s*'
                                r'return L"([^"]+)"', text):
        name = re.sub(r"`\d|[A-Za-z.]*\.|\s", "", full).replace("Object", "IInspectable")
        found[name, "id"] = iid.lower()
    # Reads interfaces that the headers declare only for C++.
    for spaces, iid, name, body in re.findall(
            r'((?:namespace \w+ \{\s*)+)struct __declspec\(uuid\("([^"]+)"\)\) (\w+) '
            r': public IUnknown\s*\{(.*?)\};', text, re.S):
        found[name, "name"] = ".".join(re.findall(r"namespace (\w+)", spaces) + [name])
        found[name, "id"], found[name, "base"] = iid, "IUnknown"
        members = re.findall(r"STDMETHOD\((\w+)\)\((.*)\) = 0", body)
        for slot, (member, listed) in enumerate(members, 3):
            found[name, "slot " + member] = str(slot)
            found[name, "parameters " + member] = parameters(re.sub(r"\w+\(.*\) ", "", listed))
        found[name, "slots"] = str(3 + len(members))


def read_enumerations(text, found):
    for name, declared in re.findall(r"\benum (\w+)(?: : (unsigned int|int))?\s*\{", text):
        if not name.startswith("__x_ABI"):
            found[name, "type"] = "UINT32" if declared == "unsigned int" else "INT32"


def read_codes(text, found):
    for name, code in re.findall(
            r"#define (\w+)\s+(?:_HRESULT_TYPEDEF_\(0x|\(\(HRESULT\))([0-9A-F]+)L\)", text):
        value = int(code, 16)
        # Keeps the first definition; some codes are defined again for 16-bit systems.
        found.setdefault((name, "code"), str(value - (1 << 32) if value >> 31 else value))


def program(tables, declared, text):
    """Returns a C program whose assembly has lines such as FACT IRadio|slot get_State|9."""
    lines = []

    def fact(subject, aspect, expression):
        lines.append(f'__asm__("FACT {subject}|{aspect}|%c0" : : "i"((long long)({expression})));')

    subjects = set(declared.subjects())
    for name, members in tables.items():
        if demangle(name) in subjects:
            fact(demangle(name), "slots", f"sizeof({name}Vtbl) / sizeof(void*)")
            for member in members:
                fact(demangle(name), "slot " + member,
                     f"offsetof({name}Vtbl, {member}) / sizeof(void*)")
    for name in declared.enumerations:
        mangled = re.search(rf"enum (__x_ABI_\w+_C{name})\n\{{(.*?)\}}", text, re.S)
        if mangled:
            fact(name, "size", f"sizeof(enum {mangled[1]})")
            for value in re.findall(rf"{name}_(\w+) =", mangled[2]):
                fact(name, "value " + value, f"{name}_{value}")
        elif re.search(rf"enum {name}\b", text):
            fact(name, "size", f"sizeof(enum {name})")
            for value in declared.enumerations[name]:
                fact(name, "value " + value, value)
    for name in declared.structures:
        mangled = re.search(rf"struct (__x_ABI_\w+_C{name})\n", text)
        fact(name, "size", f"sizeof(struct {mangled[1]})" if mangled else f"sizeof({name})")
    includes = "\n".join(f"#include <{name}>" for name in INCLUDED)
    return ("#define CINTERFACE\n#include <stddef.h>\n" + includes + "\nvoid facts(void) {\n    " +
            "\n    ".join(lines) + "\n}\n")


def read_headers(root, declared, build):
    folder = build / "include"
    link_headers(root, folder)
    text = "\n".join((folder / name).read_text(encoding="latin-1") for name in READ)
    text = text.replace("\r", "")
    found = {}
    tables = read_tables(text, found)
    read_interfaces(text, found)
    read_enumerations(text, found)
    read_codes((root / "shared" / "winerror.h").read_text(encoding="latin-1"), found)
    source = build / "header_facts.c"
    source.write_text(program(tables, declared, text), encoding="utf-8")
    assembly = subprocess.run(
        ["x86_64-w64-mingw32-gcc-posix", "-O1", "-w", f"-I{folder}", "-S", source, "-o", "-"],
        check=True, capture_output=True, encoding="utf-8").stdout
    for subject, aspect, value in re.findall(r"FACT (.*)\|(.*)\|(-?\d+)", assembly):
        found[subject, aspect] = value
    return found
