#!/usr/bin/env python3
"""Writes the manual page of orv and its completions for bash, zsh and fish from the output of --help.
orv.ps1 calls --help itself for each completion.

Usage: describe_orv.py ORV VERSION FOLDER
"""
import pathlib
import re
import subprocess
import sys


class Command:
    """One command as its --help describes it, with its subcommands."""

    def __init__(self, orv, words):
        self.words = words
        text = subprocess.run([orv, *words, "--help"], check=True, capture_output=True, text=True).stdout
        self.about = text.partition("\n")[0]
        self.usage = re.search(r"^Usage: (.*)$", text, re.MULTILINE).group(1)
        self.sections = self.parse(text)
        self.children = [Command(orv, [*words, name]) for name, _ in self.sections.get("Commands", [])]
        self.common = "The library" if "The library" in self.sections else None

    @staticmethod
    def parse(text):
        """Parses --help: returns a list of [term, description] for each section title."""
        sections, entries = {}, []
        for line in text.splitlines()[2:]:
            title = re.match(r"([A-Z][^:]*):", line)
            if title:
                entries = sections.setdefault(title.group(1), [])
            elif re.match(r"  \S", line):
                term, _, rest = line.strip().partition("  ")
                entries.append([term, rest.strip()])
            elif line.startswith("   ") and entries:
                entries[-1][1] = (entries[-1][1] + " " + line.strip()).strip()
        return sections

    def options(self):
        """Yields (option, its value or "", its description) for the long options in --help."""
        for title in ("Options", "The library"):
            for term, text in self.sections.get(title, []):
                name = re.search(r"--[a-z-]+", term).group()
                rest = re.sub(r" \(required\)", "", term).partition(name)[2].strip()
                yield name, rest.partition(" ")[0], text

    def values(self):
        """Yields ("orv COMMAND OPTION", allowed words or []) for options that need a value."""
        for name, value, _ in self.options():
            if value and not value.startswith("["):
                yield " ".join(["orv", *self.words, name]), value.split("|") if "|" in value else []

    def all(self):
        yield self
        for child in self.children:
            yield from child.all()


def roff(text):
    return text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq")


def manual(root, version):
    yield '.TH ORV 1 "" "quelvixwinlib %s" "User Commands"' % version
    yield ".SH NAME\norv \\- " + roff(root.about.rstrip("."))
    yield ".SH SYNOPSIS\n.B orv\n[\\fIoptions\\fR] \\fIcommand\\fR [\\fIarguments\\fR]"
    yield ".SH OPTIONS OF ALL COMMANDS BUT LOG"
    yield from paragraphs(root.sections["The library"])
    yield ".SH COMMANDS"
    for command in list(root.all())[1:]:
        yield ".SS " + roff(command.usage)
        yield roff(command.about)
        for title in ("Arguments", "Options", "Columns"):
            yield from paragraphs(entry for entry in command.sections.get(title, [])
                                  if "--help" not in entry[0])
    statuses = {tuple(entry) for command in root.all() for entry in command.sections.get("Exit status", [])}
    yield ".SH EXIT STATUS"
    merged = {}
    for term, text in sorted(statuses):
        merged.setdefault(term, []).append(text)
    yield from paragraphs((term, "; ".join(texts)) for term, texts in merged.items())
    yield ".SH EXAMPLE\n.nf\norv \\-\\-simulated scan \\-\\-watch\n.fi"


def paragraphs(entries):
    for term, text in entries:
        yield ".TP\n.B %s\n%s" % (roff(term), roff(text))


def bash(root):
    yield "_orv() {\n    local word command=orv current=${COMP_WORDS[COMP_CWORD]}"
    yield '    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do'
    yield '        case "$command $word" in'
    for command in list(root.all())[1:]:
        yield '            "orv %s") command="orv %s" ;;' % ((" ".join(command.words),) * 2)
    yield '        esac\n    done\n    case "$command ${COMP_WORDS[COMP_CWORD-1]}" in'
    for option, words in (each for command in root.all() for each in command.values()):
        yield '        "%s") %sreturn ;;' % (
            option, 'COMPREPLY=($(compgen -W "%s" -- "$current")); ' % " ".join(words) if words else "")
    yield '    esac\n    case "$command" in'
    for command in root.all():
        words = [name for name, _, _ in command.options()] + [child.words[-1] for child in command.children]
        yield '        "%s") COMPREPLY=($(compgen -W "%s" -- "$current")) ;;' % (
            " ".join(["orv", *command.words]), " ".join(words))
    yield "    esac\n}\ncomplete -o default -F _orv orv"


def zsh(root):
    yield "#compdef orv\nlocal word command=orv\nlocal -a entries"
    yield 'for word in "${words[@]:1:$((CURRENT - 2))}"; do\n    case "$command $word" in'
    for command in list(root.all())[1:]:
        yield '        "orv %s") command="orv %s" ;;' % ((" ".join(command.words),) * 2)
    yield '    esac\ndone\ncase "$command ${words[CURRENT - 1]}" in'
    for option, choices in (each for command in root.all() for each in command.values()):
        yield '    "%s") %s; return ;;' % (option, "compadd " + " ".join(choices) if choices else "_files")
    yield 'esac\ncase "$command" in'
    for command in root.all():
        entries = [(name, text) for name, _, text in command.options()]
        entries += [(child.words[-1], child.about) for child in command.children]
        yield '    "%s") entries=(\n%s\n    ) ;;' % (" ".join(["orv", *command.words]), "\n".join(
            "        '%s:%s'" % (name, text.replace("'", "'\\''").replace(":", "\\:"))
            for name, text in entries))
    yield "esac\n_describe command entries\n_files"


def fish(root):
    names = " ".join(child.words[0] for child in root.children)
    for command in root.all():
        if command.words:
            condition = "; and ".join("__fish_seen_subcommand_from " + word for word in command.words)
        else:
            condition = "not __fish_seen_subcommand_from " + names
        for child in command.children:
            yield "complete -c orv -n '%s' -a %s -d '%s'" % (condition, child.words[-1], child.about)
        for name, value, text in command.options():
            takes = " -x -a '%s'" % value.replace("|", " ") if "|" in value else " -r" if value else ""
            yield "complete -c orv -n '%s' -l %s%s -d '%s'" % (
                condition, name[2:], takes, text.replace("'", "\\'"))


def main():
    orv, version, folder = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    root = Command(orv, [])
    for name, lines in (("orv.1", manual(root, version)), ("orv.bash", bash(root)), ("_orv", zsh(root)),
                        ("orv.fish", fish(root))):
        (folder / name).write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    sys.exit(main())
