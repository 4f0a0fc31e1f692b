#!/usr/bin/env python3
"""Checks that provider sources include the header that declares each SDK class
they name, as a server installation lays its headers out.

A class counts as available to a file when the file, or a project header it
includes, includes the class's declaring header, or includes an interface
header whose own declarations name the class (a self-contained header brings
what its signatures need). Transitive includes beyond that differ between
the SDK subset and a server installation, so they do not count.

Also refuses the SDK's internal headers other than those listed with
--allow-internal, and the SDK's own extensions (Pegasus/Sdk), which a server
installation does not offer.

Usage: check_declaring_includes.py SDK_INCLUDE_DIR [--search DIR]...
       [--allow-internal FILE]... FILE...
"""

import os
import re
import sys

DECLARATION = re.compile(
    r"^(?:class|struct) (?:[A-Z]+_[A-Z]+_LINKAGE )?(\w+)(?: *:.*)?$"
    r"|^template <[^>]*> (?:class|struct) (\w+)$"
    r"|^enum (\w+)$",
    re.M,
)
PEGASUS_INCLUDE = re.compile(r"#include <(Pegasus/[^>]+)>")
LOCAL_INCLUDE = re.compile(r'#include [<"]([^>"]+\.h)[>"]')
WORD = re.compile(r"\b[A-Za-z_]\w*\b")


def code_of(path):
    with open(path, encoding="utf-8") as f:
        text = f.read()
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    text = re.sub(r"//.*", "", text)
    # String literals may name anything; quoted include names must stay.
    return "\n".join(
        line if line.lstrip().startswith("#include")
        else re.sub(r'"(?:[^"\\]|\\.)*"', '""', line)
        for line in text.split("\n")
    )


def is_internal(header):
    return header.startswith("Pegasus/Sdk/") or "Internal" in os.path.basename(header)


def read_sdk(sdk):
    declared_in, names_in, includes_of = {}, {}, {}
    for root, _, files in os.walk(os.path.join(sdk, "Pegasus")):
        for name in files:
            path = os.path.join(root, name)
            header = os.path.relpath(path, sdk)
            code = code_of(path)
            names_in[header] = set(WORD.findall(code))
            includes_of[header] = PEGASUS_INCLUDE.findall(code)
            if not is_internal(header):
                for m in DECLARATION.finditer(code):
                    declared_in[next(g for g in m.groups() if g)] = header
    return declared_in, names_in, includes_of


def main(argv):
    sdk, search, allowed, files = argv[0], [], set(), []
    args = iter(argv[1:])
    for a in args:
        if a == "--search":
            search.append(next(args))
        elif a == "--allow-internal":
            allowed.add(os.path.realpath(next(args)))
        else:
            files.append(a)
    declared_in, names_in, includes_of = read_sdk(sdk)

    def interface_names(header):
        # A provider interface header also brings its base interfaces.
        names = set(names_in.get(header, ()))
        if header.startswith("Pegasus/Provider/"):
            for inc in includes_of.get(header, ()):
                if inc.startswith("Pegasus/Provider/"):
                    names |= interface_names(inc)
        return names

    def project_group(path, seen):
        if path in seen:
            return
        seen.add(path)
        for inc in LOCAL_INCLUDE.findall(code_of(path)):
            for d in [os.path.dirname(path)] + search:
                candidate = os.path.join(d, inc)
                if os.path.isfile(candidate):
                    project_group(candidate, seen)
                    break

    failures = []
    for path in files:
        code = code_of(path)
        for header in PEGASUS_INCLUDE.findall(code):
            if is_internal(header) and os.path.realpath(path) not in allowed:
                failures.append(f"{path}: includes <{header}>, which a server keeps to itself")
        group = set()
        project_group(path, group)
        included, available = set(), set()
        for member in group:
            for header in PEGASUS_INCLUDE.findall(code_of(member)):
                included.add(header)
                available |= interface_names(header)
        for name in sorted(set(WORD.findall(code))):
            header = declared_in.get(name)
            if header and header not in included and name not in available:
                failures.append(f"{path}: uses {name} without including <{header}>")
    for f in failures:
        print(f)
    print(f"checked {len(files)} files: {len(failures)} problems")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
