#!/usr/bin/env python3
"""Proves that no two headers define a type of one name: the linker would take one of the two for both, in silence.

A name counts with the namespaces around it. Types inside of others, and those in sources, are apart by themselves or
by an unnamed namespace.
"""

import os
import re
import sys
import tempfile
from collections import defaultdict

DEFINITION = re.compile(r"^(?:class|struct|union|enum class|enum) (?:[A-Z_]+ )?(\w+)(?: final)?(?: :[^;]*)?(?: \{)?$")
NAMESPACE = re.compile(r"^namespace ([\w:]+)$")


def types_of(path):
    """The types that a header defines, with their namespaces. The sources' layout is what clang-format makes."""
    with open(path, encoding="utf-8") as file:
        lines = file.read().split("\n")
    scope = []
    for number, line in enumerate(lines):
        if found := NAMESPACE.match(line):
            scope.append(found[1])
        elif line.startswith("} // namespace"):
            scope.pop()
        elif (found := DEFINITION.match(line)) and (line.endswith("{") or lines[number + 1] == "{"):
            yield "::".join(scope + [found[1]])


def doubles(root):
    places = defaultdict(list)
    for folder, folders, names in os.walk(root):
        folders[:] = [name for name in folders if name not in ("build", ".git", "tests", "examples")]
        for name in sorted(names):
            if name.endswith(".h"):
                path = os.path.join(folder, name)
                for type_name in types_of(path):
                    places[type_name].append(os.path.relpath(path, root))
    return {name: paths for name, paths in places.items() if len(paths) > 1}, len(places)


def self_test():
    with tempfile.TemporaryDirectory() as root:
        for name, text in {"a.h": "namespace N\n{\n\nstruct Twice {\n};\n\nstruct Once {\n};\n\n} // namespace N\n",
                           "b.h": "namespace N\n{\n\nclass Twice final : public Base\n{\n};\n\nclass Once;\n\n} // namespace N\n",
                           "c.h": "namespace M\n{\n\nstruct Twice {\n};\n\n} // namespace M\n"}.items():
            with open(os.path.join(root, name), "w", encoding="utf-8") as file:
                file.write(text)
        found, count = doubles(root)
        assert found == {"N::Twice": ["a.h", "b.h"]}, found
        assert count == 3, count


def main(root):
    self_test()
    found, count = doubles(root)
    for name, paths in sorted(found.items()):
        print(f"{name} is defined in {' and in '.join(paths)}")
    if found or count < 100:
        sys.exit(f"{count} types found" if not found else 1)
    print(f"{count} types have names of their own")


if __name__ == "__main__":
    main(sys.argv[1])
