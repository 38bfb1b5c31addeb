#!/usr/bin/env python3
"""Finds the third-party code in linked files, and writes notices and a bill of materials.

Usage: origins.py notices BUILD TARGET...            writes the notices to standard output
       origins.py sbom VERSION OUTPUT (ARTIFACT=BUILD:TARGET,TARGET...)...

Link maps list every object file and archive member, ninja lists the headers of each object, and lock
files list npm's packages. origins.json has the licence of each origin, such as Asio; a missing
licence is an error.
"""
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent
KNOWN = json.loads((SOURCE / "packaging/origins.json").read_text(encoding="utf-8"))


def run(*command, folder=None):
    return subprocess.run(command, check=True, capture_output=True, text=True, cwd=folder).stdout


def linked_files(build, target):
    """Returns the object files and the archive members that the linker used."""
    text = (build / "maps" / (target + ".map")).read_text(encoding="utf-8", errors="replace")
    members = re.findall(r"^(/?\S+\.a)\((\S+)\)", text.partition("LOAD ")[0], re.MULTILINE)
    objects = re.findall(r"^LOAD (\S+\.o(?:bj)?)$", text, re.MULTILINE)
    if not objects:
        raise SystemExit("the link map of %s lists no object" % target)
    return objects, sorted(set(members))


def headers_of_objects(build):
    result, current = {}, None
    for line in run("ninja", "-t", "deps", folder=build).splitlines():
        if line.startswith("    ") and current is not None:
            current.append(line.strip())
        elif line.strip():
            current = result.setdefault(line.partition(":")[0], [])
    return result


def owner(path):
    found = subprocess.run(["dpkg", "-S", os.path.realpath(path)], capture_output=True, text=True).stdout
    if not found:
        raise SystemExit("no Debian package owns %s" % path)
    return found.partition(":")[0]


def lock_file(package):
    for lock in [SOURCE / "orv/report/package-lock.json", SOURCE / "bindings/node/package-lock.json"]:
        packages = json.loads(lock.read_text(encoding="utf-8"))["packages"]
        if "node_modules/" + package in packages:
            return lock, packages["node_modules/" + package]["version"]
    raise SystemExit("no lock file names %s" % package)


class Origin:
    def __init__(self, kind, package):
        names = [name for name, entry in KNOWN.items() if package in entry.get(kind, [])]
        if not names:
            raise SystemExit("packaging/origins.json lacks the %s package %s, whose code is linked"
                             % (kind, package))
        self.name, self.licence = names[0], KNOWN[names[0]]["licence"]
        if kind == "npm":
            lock, self.version = lock_file(package)
            self.text = SOURCE / "build/npm" / lock.parent.relative_to(SOURCE) / "node_modules" / package / "LICENSE"
        else:
            self.version = run("dpkg-query", "-W", "-f", "${Version}", package)
            self.text = pathlib.Path("/usr/share/doc") / package / "copyright"


def origins(build, targets):
    """Returns the origins of the code in linked files, by name."""
    build = pathlib.Path(build).resolve()
    headers = headers_of_objects(build)
    libraries = [os.path.realpath(link) for link in build.glob("header_only/*/*")]
    packages, others = set(), set()
    for target in targets:
        objects, members = linked_files(build, target)
        own = {path for path in objects if not path.startswith("/")}
        for path in objects + [path for path, _ in members]:
            if path.startswith("/") and build not in pathlib.Path(path).parents:
                others.add(os.path.realpath(path))
        # Link maps give only the file names of members of our own archives.
        taken = {member for path, member in members if not path.startswith("/") or str(build) in path}
        for path, included in headers.items():
            if path in own or pathlib.Path(path).name in taken:
                paths = [os.path.realpath(build / header) for header in included]
                others.update(folder for folder in libraries
                              if any(path.startswith(folder + "/") for path in paths))
        if any(name.startswith("report_page.cpp") for name in taken):
            packages.update(("npm", package) for package in
                            json.loads((SOURCE / "orv/report/package.json").read_text())["dependencies"])
    packages.update(("debian", owner(path)) for path in others)
    return {origin.name: origin for origin in (Origin(*package) for package in sorted(packages))}


def notices(build, targets):
    yield "quelvixwinlib contains code of others. This file names it and gives its licences."
    for origin in origins(build, targets).values():
        yield "\n%s\n%s %s (%s)\n%s\n" % ("=" * 79, origin.name, origin.version, origin.licence, "=" * 79)
        yield origin.text.read_text(encoding="utf-8").rstrip()


def identifier(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]+", "-", name)


def described(name, version, licence, **more):
    return {"SPDXID": identifier(name), "name": name, "versionInfo": version, "licenseConcluded": licence,
            "licenseDeclared": licence, "downloadLocation": "NOASSERTION", "copyrightText": "NOASSERTION",
            "filesAnalyzed": False, **more}


def sbom(version, artifacts):
    packages, relations = {}, {}  # in the order they were found
    for path, build, targets in artifacts:
        path = pathlib.Path(path)
        name = path.name
        packages[name] = described(name, version, "MIT")
        if path.is_file():
            packages[name]["checksums"] = [{"algorithm": "SHA256",
                                            "checksumValue": hashlib.sha256(path.read_bytes()).hexdigest()}]
        relations[("SPDXRef-DOCUMENT", "DESCRIBES", identifier(name))] = True
        inside = origins(build, targets) if targets else {}
        inside.update({"mkdocs-material": Origin("debian", "mkdocs-material")} if name == "site" else {})
        kinds = dict.fromkeys(inside, "CONTAINS")
        if path.suffix == ".tgz":  # npm installs its dependencies
            for package in json.loads((SOURCE / "bindings/node/package.json").read_text())["dependencies"]:
                origin = Origin("npm", package)
                inside[origin.name], kinds[origin.name] = origin, "DEPENDS_ON"
        for origin in inside.values():
            packages[origin.name] = described(origin.name, origin.version, origin.licence)
            relations[(identifier(name), kinds[origin.name], identifier(origin.name))] = True
    digest = hashlib.sha256(json.dumps(packages, sort_keys=True).encode()).hexdigest()
    return {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
            "name": "quelvixwinlib-" + version,
            "documentNamespace": "https://quelvixwinlib.invalid/spdx/" + digest,
            # A fixed time, so that the file is reproducible.
            "creationInfo": {"created": "1980-01-01T00:00:00Z",
                             "creators": ["Organization: the quelvixwinlib authors"]},
            "packages": list(packages.values()),
            "relationships": [{"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
                              for one, kind, other in relations]}


def main():
    if sys.argv[1] == "notices":
        print("\n".join(notices(sys.argv[2], sys.argv[3:])))
        return 0
    artifacts = []
    for argument in sys.argv[4:]:
        path, _, origin = argument.partition("=")
        build, _, targets = origin.partition(":")
        artifacts.append((path, build, [target for target in targets.split(",") if target]))
    pathlib.Path(sys.argv[3]).write_text(json.dumps(sbom(sys.argv[2], artifacts), indent=1) + "\n",
                                         encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
