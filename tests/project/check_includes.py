#!/usr/bin/env python3
"""Holds every #include line against the order of the layers.

A file may include its own layer and those below it; programs include public headers only; public headers include
public headers only; no files include each other in a circle, nor do two folders. A source in no layer at all is a
violation, too.

usage: check_includes.py ROOT [--self-test]
"""
import pathlib
import re
import sys
import tempfile

# Lowest first. A file belongs to the entry with the longest matching folder.
LAYERS = [
    "platform/foundation",
    "platform/disctracks",
    "platform/disctracks/vant",
    "platform/coreservices",
    "platform/fileevents",
    "platform/workspace",
    "platform/discrecording/names",
    "platform/discrecording/objects",
    "platform/discrecording/content",
    "platform/discrecording/image",
    "platform/discrecording/iso9660",
    "platform/discrecording/udf",
    "platform/discrecording/hfsplus",
    "platform/discrecording/planning",
    "platform/discrecording/burn",
    "platform/discimage/source",
    "platform/discimage/volume",
    "platform/discimage/iso9660",
    "platform/discimage/udf",
    "platform/discimage/hfsplus",
    "platform/discimage",
    "platform/discrecording/drives",
    "platform/quicktime",
    "platform/quicktime/decoding",
    "platform/quicktime/redbook",
    "platform/quicktime/mov2wav",
    "platform/dvdplayback",
    "platform/dvdplayback/player",
    "platform/dvdplayback/sound",
    "platform/discrecording/audio",
    "filemodel",
    "imaging",
    "production",
    "media",
    "ui/text",
    "imaging/jobs",
    "imaging/verification",
    "imaging/burning",
    "media/jobs",
    "ui/views",
    "ui/panels",
    "dvd",
    "dvd/player",
]
PROGRAMS = ["tools", "app", "examples"]
PUBLIC = "framework/TessaronClasses"  # and TessaronClassesUI, whose name begins the same
INCLUDE = re.compile(r'^\s*#\s*include\s+["<]((?:platform|filemodel|imaging|production|media|ui|dvd|tools|TessaronClasses|TessaronClassesUI)/[^">]+)[">]', re.M)


class Tree:
    def __init__(self, root):
        self.root = root
        folders = LAYERS + PROGRAMS + [PUBLIC, PUBLIC + "UI"]
        folders.append("platform")
        paths = {path for folder in folders for path in (root / folder).rglob("*") if path.suffix in (".h", ".cpp")}
        self.files = {str(path.relative_to(root)): path.read_text() for path in sorted(paths)}
        listed = (root / "framework/PublicHeaders.cmake").read_text()
        self.public = set(re.findall(r"platform/\S+\.h", listed))
        self.public |= {name for name in self.files if name.startswith(PUBLIC)}

    def includes(self, name):
        for target in INCLUDE.findall(self.files[name]):
            yield "framework/" + target if target.startswith("TessaronClasses") else target

    def layer(self, name):
        """Index into LAYERS; None for programs. A public header belongs where its .cpp is."""
        if name.startswith(PUBLIC):
            source = pathlib.Path(name).stem + ".cpp"
            homes = [other for other in self.files if pathlib.Path(other).name == source and not self.is_program(other)]
            if not homes:
                return max((self.layer(used) for used in self.includes(name) if used in self.files), default=0)
            name = homes[0]
        matches = [(len(folder), index) for index, folder in enumerate(LAYERS) if name.startswith(folder + "/")]
        return max(matches)[1] if matches else None

    def folder(self, name):
        """The folder whose duty a file shares: for a public header, that of its .cpp."""
        layer = None if self.is_program(name) else self.layer(name)
        return str(pathlib.PurePath(name).parent) if layer is None else LAYERS[layer]

    @staticmethod
    def is_program(name):
        return name.split("/")[0] in PROGRAMS

    def violations(self):
        for name in self.files:
            if not self.is_program(name) and self.layer(name) is None:
                yield f"{name}: lies in no layer"
                continue
            for used in self.includes(name):
                if used not in self.files:
                    if self.is_program(name) and (self.root / used).exists():
                        continue
                    yield f"{name}: includes {used}, which does not exist"
                elif self.is_program(name):
                    if used not in self.public and not self.is_program(used):
                        yield f"{name}: a program includes {used}, which is not public"
                elif self.layer(used) > self.layer(name):
                    yield f"{name}: includes {used} of the higher layer {LAYERS[self.layer(used)]}"
                elif name in self.public and used not in self.public:
                    yield f"{name}: a public header includes {used}, which is not public"
        yield from self.mutual_folders()
        yield from self.circles()

    def mutual_folders(self):
        uses = {(self.folder(name), self.folder(used)): f"{name} includes {used}"
                for name in self.files for used in self.includes(name) if used in self.files}
        for (one, other), why in sorted(uses.items()):
            if one < other and (other, one) in uses:
                yield f"folders include each other: {why}; {uses[other, one]}"

    def circles(self):
        done, path = set(), []

        def visit(name):
            if name in path:
                yield "circle: " + " -> ".join(path[path.index(name):] + [name])
                return
            if name in done or name not in self.files:
                return
            done.add(name)
            path.append(name)
            for used in self.includes(name):
                yield from visit(used)
            path.pop()

        for name in self.files:
            yield from visit(name)


def self_test():
    """Plants one of each violation and expects each to be found."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        planted = {
            "framework/PublicHeaders.cmake": "platform/foundation/Public.h\n",
            "platform/foundation/Public.h": '#include "platform/foundation/Hidden.h"\n',
            "platform/foundation/Hidden.h": "",
            "platform/foundation/Up.cpp": '#include "platform/coreservices/High.h"\n',
            "platform/coreservices/High.h": "",
            "platform/coreservices/A.h": '#include "platform/coreservices/B.h"\n',
            "platform/coreservices/B.h": '#include "platform/coreservices/A.h"\n',
            "framework/TessaronClasses/Model.h": "",
            "filemodel/Model.cpp": '#include <TessaronClasses/Model.h>\n#include "imaging/Writer.h"\n',
            "imaging/Writer.h": "",
            "tools/main.cpp": '#include "platform/foundation/Hidden.h"\n',
            "platform/discrecording/Homeless.h": "",
            "tools/one/One.h": '#include "tools/other/Other.h"\n',
            "tools/other/Other.h": "",
            "tools/other/Back.h": '#include "tools/one/Alone.h"\n',
            "tools/one/Alone.h": "",
        }
        for name, text in planted.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text)
        found = list(Tree(root).violations())
        for name in ("Public.h: a public", "Up.cpp: includes", "circle: ", "Model.cpp: includes", "main.cpp: a program",
                     "Homeless.h: lies in no layer", "folders include each other: "):
            assert any(name in line for line in found), f"not found: {name} in {found}"
        assert len(found) == 7, found


def main():
    root = pathlib.Path(sys.argv[1])
    if "--self-test" in sys.argv:
        self_test()
        print("every planted violation was found")
        return 0
    tree = Tree(root)
    assert len(tree.files) > 20, "no sources found"
    found = list(tree.violations())
    print("\n".join(found) or f"{len(tree.files)} files keep to the layers")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
