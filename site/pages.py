#!/usr/bin/env python3
"""Writes the site's pages: the documents, and a reference generated from the headers.

Usage: pages.py SOURCE LAYOUT FOLDER        writes the pages; run it before mkdocs
       pages.py index FOLDER                writes the search index as a script; run it after mkdocs
"""
import json
import os
import pathlib
import re
import shutil
import sys

RENAMED = {"README.md": "index.md", "CHANGELOG.md": "changelog.md", "LICENSE": "licence.md",
           "bindings/python/README.md": "python.md", "bindings/csharp/README.md": "csharp.md",
           "bindings/node/README.md": "node.md", "include/quelvixwinlib.h": "reference/quelvixwinlib.md",
           "include/quelvixwinlib_simulated.h": "reference/quelvixwinlib_simulated.md"}
LANGUAGES = {".c": "c", ".h": "c", ".cpp": "cpp", ".py": "python", ".json": "json", "": "sh"}


class Site:
    def __init__(self, source, folder):
        self.source, self.folder = source, folder

    def page_of(self, path):
        """Returns the page of a project file. Writes the page unless the file is a document."""
        if path in RENAMED:
            return RENAMED[path]
        if path.startswith("docs/"):
            return path[len("docs/"):]
        page = "files/%s.md" % path.replace("/", "_")
        file = self.source / path
        if file.is_dir():
            text = "\n".join("- %s" % one.name for one in sorted(file.iterdir()))
        else:
            text = "```%s\n%s\n```" % (LANGUAGES.get(file.suffix, "text"), file.read_text(encoding="utf-8").rstrip())
        self.write(page, "# %s\n\n%s\n" % (path, text))
        return page

    def write(self, page, text):
        (self.folder / page).parent.mkdir(parents=True, exist_ok=True)
        (self.folder / page).write_text(text, encoding="utf-8")

    def document(self, path):
        page = self.page_of(path)

        def link(found):
            target, anchor = found.group(1), found.group(2) or ""
            if re.match(r"\w+:|#", target):
                return found.group()
            wanted = os.path.normpath(os.path.join(os.path.dirname(path), target))
            if not (self.source / wanted).exists():
                raise SystemExit("%s: the target of the link %s does not exist" % (path, target))
            return "](%s%s)" % (os.path.relpath(self.page_of(wanted), os.path.dirname(page) or "."), anchor)

        text = (self.source / path).read_text(encoding="utf-8")
        # Links in code blocks stay unchanged.
        parts = re.split(r"(```.*?```)", text, flags=re.DOTALL)
        parts[::2] = [re.sub(r"\]\(([^)\s#]+)(#[^)\s]*)?\)", link, part) for part in parts[::2]]
        self.write(page, "".join(parts))


def linked(text, names, here):
    """Returns the text with links from function names to their descriptions."""
    def link(found):
        name = found.group()
        page = names.get(name)
        if page is None:
            return name
        return "[`%s`](%s#%s)" % (name, "" if page == here else page, name.lower())
    return re.sub(r"\b(?:Orv\w+_\w+|Logging_\w+|BluetoothAvailable)\b", link, text)


def prose(comment):
    """Converts a header comment to Markdown, with lines in capitals as headings and lines such as
    `Returns  0` as list items."""
    lines, fact = [], False
    for line in comment.splitlines():
        title = re.fullmatch(r"[A-Z]{3}[A-Z ,]+", line)
        entry = re.match(r"(Returns|Blocks|\w+) {2,}(\S.*)", line)
        if title:
            lines += ["", "## " + line.capitalize(), ""]
        elif entry:
            lines += ([] if fact else [""]) + ["- **%s** %s" % entry.groups()]
        elif fact and re.match(r" {3,}\S", line):
            lines.append("    " + line.strip())
            continue
        elif re.match(r"  [^\s-]", line):  # a list item without a dash
            lines += ([] if fact else [""]) + ["- " + line.strip()]
            entry = True
        elif re.match(r"  - |    \w", line) and not line.startswith("     "):
            lines.append(line[2:] if line.startswith("  - ") else "    " + line.strip())
        else:
            lines.append(line)
        fact = bool(entry)
    # Markdown needs an empty line before a list.
    return re.sub(r"(\n[^-\s][^\n]*)\n- ", r"\1\n\n- ", "\n".join(lines))


def reference(site, layout):
    names = {function["name"]: header["header"].replace(".h", ".md")
             for header in layout for function in header["functions"]}
    for header in layout:
        page = header["header"].replace(".h", ".md")
        text = (site.source / "include" / header["header"]).read_text(encoding="utf-8")
        intro = "\n".join(re.sub(r"^ \* ?", "", line) for line in
                          text[text.index("/*") + 2:text.index("*/")].splitlines()).strip()
        out = ["# " + header["header"], "", linked(prose(intro), names, page), ""]
        for structure in header["structures"]:
            out += ["", "## " + structure["name"], "", "%d bytes, little-endian." % structure["size"], "",
                    "| offset | field | type | |", "| --- | --- | --- | --- |"]
            out += ["| %d | `%s` | `%s%s` | %s |" % (
                field["offset"], field["name"], field["type"],
                "[%d]" % field["count"] if "count" in field else "", field["comment"])
                    for field in structure["fields"]]
        out += ["", "## Functions", ""]
        for function in header["functions"]:
            arguments = ", ".join(re.sub(r"\b(u?int\d+)\b", r"\1_t", argument["type"]) + " " + argument["name"]
                                  for argument in function["arguments"])
            out += ["", "### " + function["name"], "", "```c", "%s %s(%s);" % (
                re.sub(r"\b(u?int\d+)\b", r"\1_t", function["result"]), function["name"], arguments or "void"),
                "```", "", linked(prose(function["comment"] or "Documented with the function before."), names, page)]
        out += ["", "## Constants", "", "| name | value | |", "| --- | --- | --- |"]
        out += ["| `%s` | `%s` | %s |" % (name, value, header["constant_comments"].get(name, ""))
                for name, value in header["constants"].items()]
        site.write("reference/" + page, "\n".join(out) + "\n")


def main():
    if sys.argv[1] == "index":
        folder = pathlib.Path(sys.argv[2])
        index = (folder / "search/search_index.json").read_text(encoding="utf-8")
        (folder / "search/search_index.js").write_text("window.searchIndex = %s;\n" % index, encoding="utf-8")
        return
    site = Site(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[3]))
    shutil.rmtree(site.folder, ignore_errors=True)
    reference(site, json.loads(pathlib.Path(sys.argv[2]).read_text(encoding="utf-8")))
    for path in sorted(site.source.glob("docs/*")):
        if path.suffix == ".md":
            site.document("docs/" + path.name)
        else:
            shutil.copy(path, site.folder)
    for path in RENAMED:
        if path.endswith(".md"):
            site.document(path)
    theme = pathlib.Path("/usr/share/doc/mkdocs-material/copyright")
    site.write("licence.md", "# Licence\n\n```text\n%s```\n\n## The theme of these pages\n\n```text\n%s```\n" % tuple(
        file.read_text(encoding="utf-8") for file in (site.source / "LICENSE", theme)))
    shown = (site.source / "site/mkdocs.yml").read_text(encoding="utf-8")
    lost = [page.name for page in site.folder.glob("*.md") if ": %s\n" % page.name not in shown]
    if lost:
        raise SystemExit("site/mkdocs.yml does not list " + ", ".join(lost))
    for name in ("offline.js", "extra.css"):
        shutil.copy(site.source / "site" / name, site.folder)


if __name__ == "__main__":
    main()
