"""Reads the facts of tests/abi/windows_runtime.tsv."""
import csv
import re

import facts

FIRST_FREE = {"-": 0, "IUnknown": 3, "IInspectable": 6}


def plain(name):
    return re.sub(r"[A-Za-z.]*\.|\s", "", name)


class Table:
    def __init__(self, path):
        with open(path, encoding="utf-8") as table:
            self.rows = list(csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE))
        self.facts = {}
        self.operations = {}  # facts that rows of the kind "operation" repeat
        self.bases, self.generic, self.methods = {}, {}, {}  # by interface
        self.by_id, self.defaults = {}, {}
        for kind, read in (("interface", self.interface), ("method", self.method),
                           ("enum", self.enumerator), ("instance", self.instance),
                           ("operation", self.operation)):
            for row in self.rows:
                if row["kind"] == kind:
                    read(row)
        instances = [plain(row["name"]) for row in self.rows if row["kind"] == "instance"]
        for name in [name for name in self.bases if not self.generic[name]] + instances:
            self.slots(name)

    def interface(self, row):
        name, _, parameters = plain(row["name"]).rstrip(">").partition("<")
        self.facts[name, "id"] = row["iid"]
        self.full_name(name, row)
        self.bases[name] = row["base_or_interface"]
        self.generic[name] = parameters.split(",") if parameters else []
        self.methods[name] = []
        self.by_id[row["iid"]] = name

    def method(self, row):
        self.methods[plain(row["name"]).split("<")[0]].append(row)

    def enumerator(self, row):
        name = plain(row["name"])
        self.facts[name, "value " + row["member"]] = row["slot_or_value"]
        self.facts[name, "type"] = row["detail"]
        self.full_name(name, row)

    def instance(self, row):
        self.facts[plain(row["name"]), "id"] = row["iid"]
        self.facts[plain(row["name"]), "signature"] = row["detail"]
        for full, iid in re.findall(r"rc\(([A-Za-z.]+);\{([0-9a-f-]+)\}\)", row["detail"]):
            name = plain(full)
            self.defaults[name] = self.by_id.get(iid, iid)
            self.facts[name, "name"] = full
            self.facts[name, "default interface"] = self.defaults[name]

    def operation(self, row):
        interface, subject = row["base_or_interface"], re.split(r"[.(]", row["name"])[0]
        if "factory:" in row["detail"] and interface == "IActivationFactory":
            self.facts[subject, "made by IActivationFactory"] = "yes"
        elif "factory:" in row["detail"]:
            self.facts[interface, "statics of"] = subject
        if "<" not in interface:
            self.operations[interface, "id"] = row["iid"]
            self.operations[interface, "slot " + row["member"]] = row["slot_or_value"]

    def full_name(self, name, row):
        if "." in row["name"]:
            self.facts[name, "name"] = row["name"].split("<")[0]

    def slots(self, name):
        base, _, arguments = name.partition("<")
        arguments = dict(zip(self.generic[base], facts.split_list(arguments[:-1])))
        count = FIRST_FREE[self.bases[base]]
        for row in self.methods[base]:
            detail = "" if row["detail"] == "-" else row["detail"]
            self.facts[name, "slot " + row["member"]] = row["slot_or_value"]
            self.facts[name, "parameters " + row["member"]] = facts.parameters(
                self.parameter(text, arguments) for text in facts.split_list(detail))
            count = max(count, int(row["slot_or_value"]) + 1)
        self.facts[name, "base"] = self.bases[base]
        self.facts[name, "slots"] = str(count)

    def parameter(self, text, arguments):
        """Returns the type in `text`, such as "S* sender", with T, S and A replaced by `arguments`.
        The name of a class or interface already stands for a pointer, so S* and A* lose their *."""
        declared = text.rpartition(" ")[0]
        alone = re.fullmatch(r"([SA])\*|(T)(\*?)", declared)
        if alone and arguments:
            return self.passed(arguments[alone[1] or alone[2]]) + (alone[3] or "")
        return re.sub(r"\b[TSA]\b", lambda letter: arguments[letter.group()], declared)

    def passed(self, name):
        if name in self.defaults:
            return self.defaults[name] + "*"
        return name + "*" if name.split("<")[0] in self.bases else name
