"""Reads and compares facts of a binary interface, such as facts["IRadio", "slot get_State"] = "9".
The key is a subject (a C++ type's name without spaces and namespaces) and an aspect."""
import re

ALIASES = {"ULONG": "UINT32", "DWORD": "UINT32", "HRESULT": "INT32", "CLSID": "GUID"}


def split_list(text):
    """Splits a list at its commas, except those inside <>."""
    parts, depth = [""], 0
    for letter in text:
        depth += {"<": 1, ">": -1}.get(letter, 0)
        if letter == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += letter
    return [part.strip() for part in parts] if text.strip() else []


def type_name(text):
    """Returns a type as the metadata and the headers both spell it, without `const`, which does not
    change the binary interface."""
    text = re.sub(r"\bconst\b|\borv::|\s", "", text)
    return re.sub(r"\w+", lambda word: ALIASES.get(word.group(), word.group()), text)


def parameters(types):
    return ", ".join(type_name(text) for text in types)


def read(lines):
    facts = {}
    for line in lines:
        subject, aspect, value = line.rstrip("\n").split("\t")
        if aspect.startswith(("parameters", "fields")):
            value = parameters(split_list(value))
        facts[subject, aspect] = value
    return facts


def compare(name, facts, official):
    """Compares facts with those of each official source. Returns the number of facts found in
    each, and a line for each difference. A fact that no official source has is a difference."""
    counts, differences = dict.fromkeys(official, 0), []
    for (subject, aspect), value in facts.items():
        known = {place: known[subject, aspect] for place, known in official.items()
                 if (subject, aspect) in known}
        if not known:
            differences.append(
                f"{subject}, {aspect}: {name} has {value}, no official source has it")
        for place, expected in known.items():
            counts[place] += 1
            if name == "compiler":  # C++ has one type for bytes and booleans
                expected = re.sub(r"\bboolean\b", "BYTE", expected)
            if value != expected:
                differences.append(
                    f"{subject}, {aspect}: {name} has {value}, the {place} have {expected}")
    return counts, differences
