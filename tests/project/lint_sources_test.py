#!/usr/bin/env python3
"""Runs lint_sources.py over a small project of its own, with a stand-in for clang-tidy that finds every "BAD"."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).with_name("lint_sources.py")
STAND_IN = """#!/bin/sh
[ "$1" = --version ] && { echo stand-in 1; exit 0; }
for source; do :; done
echo "$source" >>"$CHECKED"
! grep -l BAD "$source" part.h
"""


class LintSources(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = pathlib.Path(scratch.name)
        self.root = self.scratch / "project"
        self.checked = self.scratch / "checked"
        programs = self.scratch / "bin"
        programs.mkdir()
        (programs / "clang-tidy").write_text(STAND_IN)
        (programs / "clang-tidy").chmod(0o755)
        self.environment = {"PATH": f"{programs}:{os.environ['PATH']}", "CHECKED": str(self.checked),
                            "XDG_CACHE_HOME": str(self.scratch / "cache"), "HOME": str(self.scratch),
                            "GIT_CONFIG_NOSYSTEM": "1"}
        (self.root / "build").mkdir(parents=True)
        self.write(".clang-tidy", "Checks: all\n")
        self.write(".gitignore", "build\n")
        self.write("part.h", "int part();\n")
        for name in ("one.cpp", "two.cpp"):
            self.write(name, '#include "part.h"\n')
        self.write("unbuilt.cpp", "")
        (self.root / "build/compile_commands.json").write_text(json.dumps([
            {"directory": str(self.root / "build"), "file": str(self.root / name),
             "command": f"ccache g++ -I{self.root} -o {name}.o -c {self.root / name}"}
            for name in ("one.cpp", "two.cpp")]))
        self.git("init", "-q")
        self.commit()

    def write(self, name, text):
        (self.root / name).write_text(text)

    def git(self, *arguments):
        subprocess.run(["git", "-c", "user.name=a", "-c", "user.email=a@b", *arguments], cwd=self.root, check=True,
                       env=self.environment)

    def commit(self):
        self.git("add", ".")
        self.git("commit", "-q", "-m", "one more", "--allow-empty")

    def lint(self, *arguments, root=None):
        """Exit status, output and the sources that clang-tidy was run over."""
        self.checked.write_text("")
        result = subprocess.run([sys.executable, str(SCRIPT), "--build", "build", *arguments], cwd=root or self.root,
                                capture_output=True, text=True, env=self.environment)
        self.assertEqual(result.stderr, "")
        return result.returncode, result.stdout, sorted(self.checked.read_text().split())

    def test_sources_areCheckedOnce_whileTheyStayAsTheyAre(self):
        self.assertEqual(self.lint()[::2], (0, ["one.cpp", "two.cpp"]))
        self.assertEqual(self.lint()[::2], (0, []))
        self.write("one.cpp", '#include "part.h"\nint more;\n')
        self.assertEqual(self.lint()[::2], (0, ["one.cpp"]))
        self.write("part.h", "long part();\n")
        self.assertEqual(self.lint()[::2], (0, ["one.cpp", "two.cpp"]))
        self.write(".clang-tidy", "Checks: more\n")
        self.assertEqual(self.lint()[::2], (0, ["one.cpp", "two.cpp"]))
        self.assertEqual(self.lint("--shallow")[::2], (0, ["one.cpp", "two.cpp"]))

    def test_findings_failEachTime(self):
        self.write("two.cpp", "// BAD\n")
        for _ in range(2):
            status, output, checked = self.lint("two.cpp")
            self.assertEqual((status, checked), (1, ["two.cpp"]))
            self.assertIn("findings in 1", output)

    def test_sourcesThatAreNotReached_areNamed(self):
        status, output, checked = self.lint("--minutes", "0")
        self.assertEqual((status, checked), (0, []))
        for name in ("one.cpp", "two.cpp"):
            self.assertIn(f"left out, for the time is over: {name}", output)
        self.assertIn("not built here, so not checked: unbuilt.cpp", output)

    def test_touched_takesWhatTheLastCommitsChanged(self):
        self.write("two.cpp", '#include "part.h"\nint more;\n')
        self.commit()
        self.write("one.h", "")
        self.commit()
        self.assertEqual(self.lint("--touched", "1")[::2], (0, ["one.cpp"]))
        self.assertEqual(self.lint("--touched", "2")[::2], (0, ["two.cpp"]))
        self.assertEqual(self.lint("--touched", "3")[::2], (0, []), "all were clean")

    def test_touched_inAShallowClone_leavesOutWhatIsNotKnown(self):
        self.write("two.cpp", '#include "part.h"\nint more;\n')
        self.commit()
        clone = self.scratch / "clone"
        for depth, expected in (("2", ["two.cpp"]), ("1", ["one.cpp", "two.cpp"])):
            self.git("clone", "-q", "--depth", depth, f"file://{self.root}", str(clone))
            (clone / "build").mkdir()
            commands = (self.root / "build/compile_commands.json").read_text()
            (clone / "build/compile_commands.json").write_text(commands.replace(str(self.root), str(clone)))
            status, output, checked = self.lint("--touched", "50", root=clone)
            self.assertEqual((status, checked), (0, expected))
            self.assertIn(f"only {int(depth) - 1} of 50 commits are known", output)
            subprocess.run(["rm", "-rf", str(clone), str(self.scratch / "cache")], check=True)


if __name__ == "__main__":
    unittest.main()
