#!/usr/bin/env python3
"""Runs clang-tidy over sources and remembers which were clean: a source is not checked again while it, all that it
includes, its command line and the checks are what they were.

usage: lint_sources.py --build FOLDER [--touched COMMITS] [--minutes N] [--jobs N] [--shallow] [SOURCE...]

Without SOURCE: all sources of the project, or with --touched those that the last so many commits touched, the latest
first. After --minutes no further source is begun, and the ones left out are named. The exit status is 1 when there
were findings.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys
import threading
import time

# The analyzer walks every path through a function. In tests, whose macros make many paths of a line, that takes three
# quarters of the time (13 of 17 s a source), so there it goes less deep.
SHALLOW = [f"--extra-arg={part}" for part in ("-Xclang", "-analyzer-config", "-Xclang", "mode=shallow")]


class Cache:
    """What was clean: a file each source and command, which lists digests of all that was read."""

    def __init__(self, root, folder):
        self.root = root
        self.folder = folder
        self.digests = {}

    def digest(self, path):
        if path not in self.digests:
            try:
                self.digests[path] = hashlib.sha256((self.root / path).read_bytes()).hexdigest()
            except OSError:
                self.digests[path] = "missing"
        return self.digests[path]

    def record(self, identity):
        return self.folder / (hashlib.sha256(json.dumps(identity).encode()).hexdigest() + ".json")

    def is_clean(self, identity):
        try:
            known = json.loads(self.record(identity).read_text())
        except (OSError, ValueError):
            return False
        return all(self.digest(path) == digest for path, digest in known.items())

    def remember(self, identity, digests):
        self.folder.mkdir(parents=True, exist_ok=True)
        scratch = self.record(identity).with_suffix(f".{os.getpid()}.{threading.get_ident()}")
        scratch.write_text(json.dumps(digests))
        scratch.replace(self.record(identity))


class Linter:
    def __init__(self, root, build, is_shallow, cache):
        self.root = root
        self.build = build
        self.is_shallow = is_shallow
        self.cache = cache
        self.commands = {}
        for entry in json.loads((build / "compile_commands.json").read_text()):
            path = os.path.relpath(os.path.join(entry["directory"], entry["file"]), root)
            self.commands[path] = (entry["directory"], shlex.split(entry["command"]))
        version = subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True, text=True).stdout
        self.tool = [version, (root / ".clang-tidy").read_text()]

    def depth(self, source):
        return SHALLOW if self.is_shallow or source.startswith("tests/") else []

    def identity(self, source):
        command = [part.replace(str(self.root), ".") for part in self.commands[source][1]]
        return [source, command, self.depth(source), self.tool]

    def is_known_clean(self, source):
        return self.cache.is_clean(self.identity(source))

    def dependencies(self, source):
        """Digests of all files that the source is made of."""
        folder, command = self.commands[source]
        if os.path.basename(command[0]) == "ccache":
            command = command[1:]
        end = command.index("-o")
        rule = subprocess.run(command[:end] + command[end + 2:] + ["-M"], cwd=folder, check=True, capture_output=True,
                              text=True).stdout
        paths = shlex.split(rule.replace("\\\n", " "))[1:]
        paths = [os.path.realpath(os.path.join(folder, path)) for path in paths]
        inside = str(self.root) + os.sep
        return {path: self.cache.digest(path) for path in (path.removeprefix(inside) for path in paths)}

    def check(self, source):
        """Seconds taken, and the findings: empty for a clean source."""
        start = time.monotonic()
        digests = self.dependencies(source)
        result = subprocess.run(["clang-tidy", "--quiet", "-p", str(self.build), *self.depth(source), source],
                                cwd=self.root, capture_output=True, text=True)
        findings = result.stdout
        if result.returncode != 0 and not findings:
            findings = result.stderr
        if not findings:
            self.cache.remember(self.identity(source), digests)
        return time.monotonic() - start, findings


def git(root, *arguments):
    return subprocess.run(["git", "-C", str(root), *arguments], check=True, capture_output=True, text=True).stdout


def touched_sources(root, count):
    """Sources that the last commits touched, the latest first. A header stands for the source of its name."""
    shallow_file = root / git(root, "rev-parse", "--git-path", "shallow").strip()
    borders = set(shallow_file.read_text().split()) if shallow_file.exists() else set()
    names, commits = [], git(root, "log", f"-{count}", "--format=%H").split()
    for commit in commits:
        # What the oldest commit of a shallow clone changed is not known: all would seem to be new in it.
        if commit not in borders:
            names += git(root, "show", "--format=", "--name-only", "-m", "--first-parent", commit).splitlines()
    if borders.intersection(commits):
        print(f"The clone is shallow: only {len(set(commits) - borders)} of {count} commits are known.")
        if len(commits) == 1:
            return None
    return list(dict.fromkeys(name[:-2] + ".cpp" if name.endswith(".h") else name for name in names))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--touched", type=int)
    parser.add_argument("--minutes", type=float)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--shallow", action="store_true")
    parser.add_argument("sources", nargs="*")
    options = parser.parse_args()

    root = pathlib.Path(git(pathlib.Path.cwd(), "rev-parse", "--show-toplevel").strip())
    cache_folder = os.environ.get("XDG_CACHE_HOME") or os.path.expanduser("~/.cache")
    cache = Cache(root, pathlib.Path(cache_folder) / "tessaron-lint")
    linter = Linter(root, options.build.resolve(), options.shallow, cache)
    sources = options.sources or None
    if options.touched:
        sources = touched_sources(root, options.touched)
    known = git(root, "ls-files", "--cached", "--others", "--exclude-standard", "--", "*.cpp").splitlines()
    if sources is None:
        sources = known
    else:
        sources = [source for source in sources if source in known]
    without_command = [source for source in sources if source not in linter.commands]
    sources = [source for source in sources if source in linter.commands]
    waiting = [source for source in sources if not linter.is_known_clean(source)]
    clean_before = len(sources) - len(waiting)

    deadline = time.monotonic() + options.minutes * 60 if options.minutes is not None else float("inf")
    left_out, with_findings = [], []
    output = threading.Lock()

    def work(source):
        if time.monotonic() >= deadline:
            with output:
                left_out.append(source)
            return
        seconds, findings = linter.check(source)
        with output:
            print(f"{seconds:5.1f} s  {source}", flush=True)
            if findings:
                with_findings.append(source)
                print(findings, flush=True)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in concurrent.futures.as_completed([pool.submit(work, source) for source in waiting]):
            done.result()

    for source in without_command:
        print(f"not built here, so not checked: {source}")
    for source in left_out:
        print(f"left out, for the time is over: {source}")
    print(f"clang-tidy: {len(sources) - len(left_out)} of {len(sources)} sources checked ({clean_before} unchanged "
          f"since they were clean), findings in {len(with_findings)}")
    return 1 if with_findings else 0


if __name__ == "__main__":
    sys.exit(main())
