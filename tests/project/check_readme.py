#!/usr/bin/env python3
"""Proves that the program in README.md is the one that the suite builds and runs."""

import re
import sys
import textwrap


def main(readme_path, program_path):
    with open(readme_path, encoding="utf-8") as file:
        samples = re.findall(r"```cpp\n(.*?)```", file.read(), re.DOTALL)
    with open(program_path, encoding="utf-8") as file:
        program = file.read()
    if not samples:
        sys.exit(f"{readme_path} shows no program")
    for sample in samples:
        if textwrap.indent(sample, "    ") not in program:
            sys.exit(f"this sample of {readme_path} is not a part of {program_path}:\n{sample}")


if __name__ == "__main__":
    main(*sys.argv[1:])
