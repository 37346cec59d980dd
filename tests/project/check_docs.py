#!/usr/bin/env python3
"""Holds the documents against the sources.

Every relative link leads to a file. A link whose text is code, such as [`Plan::make()`](../plan/Plan.cpp), names a
function that the file defines, or a type. docs/tour.md leads through at least ten functions. The table in
docs/ARCHITECTURE.md has a row for each layer of check_includes.py, in that order, and says what it holds.

usage: check_docs.py ROOT [--write | --self-test]    --write: brings the rows into order and adds the missing ones
"""

import pathlib
import re
import sys
import tempfile

from check_includes import LAYERS

LINK = re.compile(r"\[([^\]]*)\]\(([^)\s#]+)(?:#[^)]*)?\)")
TABLE = re.compile(r"(\| layer, lowest first \| holds \|\n\|---\|---\|\n)((?:\|.*\n)+)")
ROW = re.compile(r"\| `([^`]+)` \| (.*) \|")
NOT_SAID = "(not described yet)"


def defines(text, name):
    """Whether a source or header has the function, in the layout that clang-format gives, or the type."""
    name = name.removesuffix("()")
    function = rf"^(?![\s/#]).*\b{re.escape(name)}\("
    in_class = rf"^ {{4}}(?!return\b)[\w\[].*\b{re.escape(name)}\("
    kind = rf"^(?:class|struct|enum class) (?:\w+ )?{re.escape(name)}\b"
    return any(re.search(pattern, text, re.MULTILINE) for pattern in (function, in_class, kind))


def documents(root):
    return [path for path in [*root.glob("*.md"), *root.glob("docs/*.md")] if path.is_file()]


def broken_links(root):
    for document in documents(root):
        for text, target in LINK.findall(document.read_text(encoding="utf-8")):
            if re.match(r"[a-z]+:", target):
                continue
            path = document.parent / target
            where = f"{document.relative_to(root)}: {target}"
            if not path.exists():
                yield f"{where} does not exist"
            elif text.startswith("`") and path.is_file() and not defines(path.read_text(encoding="utf-8"), text.strip("`")):
                yield f"{where} does not define {text}"


def short_tour(root):
    tour = (root / "docs/tour.md").read_text(encoding="utf-8")
    functions = {text for text, _ in LINK.findall(tour) if text.endswith("()`")}
    if len(functions) < 10:
        yield f"docs/tour.md leads through {len(functions)} functions only"


def wrong_table(root, layers):
    table = TABLE.search((root / "docs/ARCHITECTURE.md").read_text(encoding="utf-8"))
    rows = ROW.findall(table[2]) if table else []
    if [name for name, _ in rows[:len(layers)]] != layers:
        yield "docs/ARCHITECTURE.md: the table of layers is not that of check_includes.py (check_docs.py --write)"
    for name, holds in rows:
        if holds == NOT_SAID:
            yield f"docs/ARCHITECTURE.md does not say what {name} holds"


def write_table(root, layers):
    """Rows of folders that are not layers, such as programs, stay at the end."""
    path = root / "docs/ARCHITECTURE.md"
    text = path.read_text(encoding="utf-8")
    known = dict(ROW.findall(TABLE.search(text)[2]))
    names = layers + [name for name in known if name not in layers and (root / name).exists()]
    rows = "".join(f"| `{name}` | {known.get(name, NOT_SAID)} |\n" for name in names)
    path.write_text(TABLE.sub(lambda match: match[1] + rows, text), encoding="utf-8")


def violations(root, layers):
    return [*broken_links(root), *short_tour(root), *wrong_table(root, layers)]


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "docs").mkdir()
        (root / "low").mkdir()
        (root / "high").mkdir()
        (root / "tools").mkdir()
        (root / "low/Part.cpp").write_text(
            "Part::Part()\n{\n    other();\n}\n\n/// comes()\nclass EXPORT Kind final\n{\n    void declared(int x);\n};\n")
        good = "[a](../low) [`Part::Part()`](../low/Part.cpp) [`Kind`](../low/Part.cpp) [`declared()`](../low/Part.cpp#L3)\n"
        steps = "".join(f"[`f{number}()`](all.cpp)\n" for number in range(9))
        (root / "docs/all.cpp").write_text("".join(f"int f{number}()\n" for number in range(9)))
        (root / "docs/tour.md").write_text(good + steps + "[web](https://example.org/gone)\n")
        table = "| layer, lowest first | holds |\n|---|---|\n"
        architecture = root / "docs/ARCHITECTURE.md"
        architecture.write_text(table + "| `low` | a |\n| `high` | b |\n| `tools` | c |\n\nEnd\n")
        assert violations(root, ["low", "high"]) == [], violations(root, ["low", "high"])

        (root / "README.md").write_text("[`other()`](low/Part.cpp) [`comes()`](low/Part.cpp) [x](low/Gone.cpp)\n")
        (root / "docs/tour.md").write_text(steps)
        architecture.write_text(table + "| `high` | b |\n| `tools` | c |\n\nEnd\n")
        found = violations(root, ["low", "high"])
        assert [line.split()[-1] for line in found] == ["`other()`", "`comes()`", "exist", "only", "--write)"], found
        write_table(root, ["low", "high"])
        assert architecture.read_text() == (
            table + f"| `low` | {NOT_SAID} |\n| `high` | b |\n| `tools` | c |\n\nEnd\n"), architecture.read_text()
        assert list(wrong_table(root, ["low", "high"])) == ["docs/ARCHITECTURE.md does not say what low holds"]


def main():
    root = pathlib.Path(sys.argv[1])
    if "--self-test" in sys.argv:
        self_test()
        print("every planted violation was found")
        return 0
    if "--write" in sys.argv:
        write_table(root, LAYERS)
    found = violations(root, LAYERS)
    print("\n".join(found) or f"{len(documents(root))} documents agree with the sources")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
