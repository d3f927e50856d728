#!/usr/bin/python3
"""Prints every skipped test and why, and complains of one that tests/allowed-skips.txt does not allow. The last line
counts the tests. Usage: report_skips.py RESULTS.xml... (what ctest --output-junit writes)"""
import fnmatch
import re
import sys
import xml.etree.ElementTree
from pathlib import Path

ALLOWED_SKIPS = Path(__file__).resolve().parent.parent / "allowed-skips.txt"
# "test_x (__main__.Class.test_x) ... skipped 'why'"; a test's description may stand on a line between.
UNITTEST = re.compile(r"^(\w+) \([\w.]*?(\w+)(?:\.\1)?\)(?:\n[^\n]*)? \.\.\. skipped (['\"])(.*)\3$", re.MULTILINE)
UNITTEST_COUNT = re.compile(r"^OK \(.*skipped=(\d+)", re.MULTILINE)
# What GoogleTest prints: "FILE:LINE: Skipped", and then what the test gave as the reason.
GOOGLETEST = re.compile(r": Skipped\n(.*)$", re.MULTILINE)


def allowed_skips(text):
    """Pairs of patterns: the test's name, the reason it prints."""
    lines = [line.strip() for line in text.splitlines()]
    return [tuple(part.strip() for part in line.split(" -- ", 1)) for line in lines if line and line[0] != "#"]


def skips_of(case):
    """Name and reason of what was skipped in one of ctest's tests."""
    name, output = case.get("name"), case.findtext("system-out") or ""
    whole = case.find("skipped") is not None or case.get("status") in ("notrun", "disabled")
    if whole:
        reason = GOOGLETEST.search(output)
        return [(name, reason.group(1).strip() if reason else "no reason given")]
    shown = [(f"{name}: {part}.{test}", reason) for test, part, _, reason in UNITTEST.findall(output)]
    counted = sum(int(count) for count in UNITTEST_COUNT.findall(output))
    return shown + [(name, "a test of this file gives no reason")] * (counted - len(shown))


def is_allowed(skip, allowed):
    return any(fnmatch.fnmatchcase(skip[0], name) and fnmatch.fnmatchcase(skip[1], reason) for name, reason in allowed)


def main(files):
    cases = [case for file in files for case in xml.etree.ElementTree.parse(file).iter("testcase")]
    skips = [skip for case in cases for skip in skips_of(case)]
    allowed = allowed_skips(ALLOWED_SKIPS.read_text(encoding="utf-8"))
    refused = [skip for skip in skips if not is_allowed(skip, allowed)]
    for skip in skips:
        print("NOT ALLOWED to skip" if skip in refused else "skipped", "--", *skip)
    if refused:
        print(f"add what this system lacks, or the test and its reason to {ALLOWED_SKIPS.name}")
    failed = sum(case.find("failure") is not None for case in cases)
    print(f"{len(cases)} tests, {failed} failed, {len(skips)} skipped")
    return 1 if refused or not cases else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
