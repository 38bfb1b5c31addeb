"""Finds the declarations in the headers of src/platform/abi with regular expressions."""
import re


class Declared:
    def __init__(self, folder):
        self.folder = folder
        self.headers = sorted(folder.glob("*.h"))
        text = "\n".join(path.read_text(encoding="utf-8") for path in self.headers)
        text = re.sub(r"//[^\n]*", "", text)
        self.members = {}  # member names of each interface, in order
        self.generic = set()
        for generic, name, body in re.findall(
                r"(template <[^>]*>\s*)?struct (\w+)(?: : I(?:Unknown|Inspectable))? \{(.*?)\n\};",
                text, re.S):
            if "virtual" in body or "Iid = " in body:
                self.members[name] = re.findall(r"virtual \w+ (\w+)\(", body)
                if generic:
                    self.generic.add(name)
        self.classes = re.findall(r"struct (\w+) \{[^}]*using DefaultInterface", text)
        self.named_classes = re.findall(r"struct (\w+) \{\s*static constexpr char16_t Name", text)
        self.enumerations = {}
        for name, body in re.findall(r"enum class (\w+) : \w+(?: \{([^}]*)\})?;", text):
            self.enumerations[name] = re.findall(r"(\w+) =", body)
        self.structures = {}
        for name, body in re.findall(r"struct (\w+) \{\n((?: +\w+ \w+(?:\[8\])?;\n)+)\};", text):
            self.structures[name] = re.findall(r"\w+ (\w+)(?:\[8\])?;", body)
        self.instances = [re.sub(r"\s", "", name)
                          for name in re.findall(r"IidOf<([^=]*)>\s*=\s*Guid", text)]
        self.codes = re.findall(r"constexpr HRESULT (\w+) =", text)

    def subjects(self):
        """Returns the names to look up in the official sources."""
        return [*self.members, *self.classes, *self.enumerations, *self.structures, *self.instances]

    def interfaces(self):
        """Yields non-generic interfaces and instances of generic ones, with their members."""
        for name, members in self.members.items():
            if name not in self.generic:
                yield name, members
        for name in self.instances:
            yield name, self.members[name.split("<")[0]]
