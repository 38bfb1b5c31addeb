#!/usr/bin/env python3
"""Converts windows_runtime.tsv, the facts of the Windows Runtime's binary interface, to C++ tables.
Each row of a table compares a fact with src/platform/abi.

Usage: generate_facts.py TABLE OUTPUT HEADER...

Fails if a header declares an interface, enumeration or generic instance that the table lacks.
"""
import csv
import re
import sys
import uuid

# The test instantiates generic interfaces with these type arguments.
ARGUMENTS = {"T": "Radio", "S": "GattCharacteristic", "A": "GattValueChangedEventArgs"}


def split_outside_brackets(text):
    return [part.strip() for part in re.split(r",(?![^<]*>)", text)]


def unqualified(name):
    return re.sub(r"[A-Za-z.]*\.", "", name)


def instantiated(name):
    return re.sub(r"\b[TSA]\b", lambda letter: ARGUMENTS[letter.group()], name)


def parameter_type(parameter):
    declared = parameter.rpartition(" ")[0]
    # In windows_runtime.tsv, an event's sender and arguments have pointer types (S*, A*), but list
    # elements have the plain type T. Abi<> converts both to the type in the binary interface.
    if re.fullmatch(r"[SA]\*", declared):
        declared = "Abi<%s>" % declared[0]
    return instantiated(re.sub(r"^T\b", "Abi<T>", declared))


def function_type(interface, member, detail):
    result = "ULONG" if member in ("AddRef", "Release") else "HRESULT"
    parameters = [] if detail == "-" else split_outside_brackets(detail)
    return "%s (%s::*)(%s)" % (result, interface, ", ".join(map(parameter_type, parameters)))


def guid(text):
    value = uuid.UUID(text)
    last = ", ".join("0x%02x" % byte for byte in value.bytes[8:])
    return "GUID{0x%08x, 0x%04x, 0x%04x, {%s}}" % (value.fields[0], value.fields[1],
                                                   value.fields[2], last)


def generate(rows):
    tables = {"Slot": [], "Interface": [], "Identifier": [], "Enumerator": [], "RuntimeClass": []}
    first_free = {"-": 0, "IUnknown": 3, "IInspectable": 6}
    interfaces, classes = {}, {}
    for row in rows:
        name = instantiated(unqualified(row["name"]))
        member, value = row["member"], row["slot_or_value"]
        if row["kind"] == "interface":
            interfaces[name] = [first_free[row["base_or_interface"]], row["iid"]]
        elif row["kind"] == "method":
            interfaces[name][0] = max(interfaces[name][0], int(value) + 1)
            # The prefix orv:: avoids argument-dependent lookup, which fails for types that are only
            # declared.
            tables["Slot"].append('orv::SlotRow("%s", "%s", %s, &%s::%s, Same<%s>())' % (
                name, member, value, name, member, function_type(name, member, row["detail"])))
        elif row["kind"] == "enum":
            tables["Enumerator"].append('EnumeratorRow("%s", "%s", %s, %s::%s)' % (
                name, member, value, name, member))
        elif row["kind"] == "instance":
            tables["Identifier"].append('{"%s", %s, IidOf<%s>}' % (name, guid(row["iid"]), name))
            classes.update(re.findall(r"rc\(([A-Za-z.]+);\{([0-9a-f-]+)\}\)", row["detail"]))
    for name, (slots, iid) in interfaces.items():
        tables["Interface"].append('{"%s", %d, SlotCount<%s>()}' % (name, slots, name))
        # A generic interface itself has no identifier.
        if "<" not in name:
            tables["Identifier"].append('{"%s", %s, IidOf<%s>}' % (name, guid(iid), name))
    for full, iid in classes.items():
        name = unqualified(full)
        tables["RuntimeClass"].append('ClassRow<%s>("%s", u"%s", %s)' % (name, full, full, guid(iid)))
    return tables


def undeclared(rows, headers):
    """Returns the names that the headers declare and the table lacks."""
    known = {"%s.%s" % (unqualified(row["name"]), row["member"]) for row in rows}
    known |= {re.sub(r"<.*", "", unqualified(row["name"])) for row in rows}
    known |= {row["name"].replace(" ", "") for row in rows if row["kind"] == "instance"}
    text = "\n".join(headers)
    declared = set(re.findall(r"struct (\w+) : I(?:Unknown|Inspectable) \{", text))
    declared |= {re.sub(r"\s", "", name)
                 for name in re.findall(r"IidOf<([^=]*)>\s*=\s*Guid", text)}
    for enumeration, body in re.findall(r"enum class (\w+) : \w+ \{([^}]*)\}", text):
        declared |= {"%s.%s" % (enumeration, member) for member in re.findall(r"(\w+) =", body)}
    return sorted(declared - known)


def main():
    with open(sys.argv[1], encoding="utf-8") as table:
        rows = list(csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE))
    headers = [open(path, encoding="utf-8").read() for path in sys.argv[3:]]
    unknown = undeclared(rows, headers)
    if unknown:
        sys.exit("declared in src/platform/abi, but not in %s:\n  %s" % (
            sys.argv[1], "\n  ".join(unknown)))
    with open(sys.argv[2], "w", encoding="utf-8") as output:
        for kind, lines in generate(rows).items():
            output.write("const %s %sRows[] = {\n    %s,\n};\n" % (
                kind, kind, ",\n    ".join(lines)))


if __name__ == "__main__":
    main()
