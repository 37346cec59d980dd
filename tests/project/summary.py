#!/usr/bin/env python3
"""Prints the closing line of a test run, "N passed, N failed, N skipped", from the results that ctest wrote."""
import sys
import xml.etree.ElementTree as ElementTree

suite = ElementTree.parse(sys.argv[1]).getroot()
count = {name: int(suite.get(name, "0")) for name in ("tests", "failures", "skipped", "disabled")}
skipped = count["skipped"] + count["disabled"]
passed = count["tests"] - count["failures"] - skipped
print(f"{passed} passed, {count['failures']} failed" + (f", {skipped} skipped" if skipped else ""))
