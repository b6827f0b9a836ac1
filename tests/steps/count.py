#!/usr/bin/env python3
"""count.py FOLDER: sums up the reports of a run (JUnit XML) in single tests, and tells of what failed.

A test of ctest may hold tests: those of a ctest of its own (FOLDER/NAME/ctest.xml), or of a suite that has left its
report there (FOLDER/NAME.xml). One that failed though none of its tests did, such as one that crashed, counts as one failure.
"""
import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path

LINES_TOLD = 40  # of a failed step's log


def outcome(case):
    if case.find("failure") is not None or case.find("error") is not None:
        return "failed"
    if case.find("skipped") is None and case.get("status") != "notrun":
        return "passed"
    return "skipped"


def cases(report):
    """The test cases of a report; none when there is no report or only the beginning of one."""
    try:
        return list(ElementTree.parse(report).iter("testcase"))
    except (OSError, ElementTree.ParseError):
        return []


def tests(folder):
    """(name, outcome) of all single tests of the ctest whose reports lie there."""
    for case in cases(folder / "ctest.xml"):
        name = case.get("name")
        # What a failed build has left undone, ctest calls not run.
        own = "failed" if outcome(case) == "skipped" else outcome(case)
        inner = list(tests(folder / name)) or [(".".join(filter(None, (one.get("classname"), one.get("name")))), outcome(one))
                                               for one in cases(folder / f"{name}.xml")]
        yield from ((f"{name}: {test}", told) for test, told in inner)
        if own == "failed" and all(told != "failed" for _, told in inner):
            yield name, "failed"
        elif not inner and not name.startswith("build-"):
            yield name, own


def main(folder):
    steps = [case.get("name") for case in cases(folder / "ctest.xml")]
    found = list(tests(folder))
    failed = [name for name, told in found if told == "failed"]
    for step in steps:
        log = folder / f"{step}.log"
        if log.exists() and any(name.split(":")[0] == step for name in failed):
            lines = log.read_text(encoding="utf-8", errors="replace").splitlines()[-LINES_TOLD:]
            print(f"\nThe end of {log}:", *lines, sep="\n    | ")
    if failed:
        print("\nFailed:", *failed, sep="\n  ")
    on_windows = sum(name.split(":")[0].removesuffix("32") in ("wine", "e2e-exe", "aim") for name, _ in found)
    if on_windows:
        print(f"\n{on_windows} tests ran as Windows programs under Wine.")
    counts = Counter(told for _, told in found)
    skipped = f", {counts['skipped']} skipped" if counts["skipped"] else ""
    print(f"\n{counts['passed']} passed, {counts['failed']} failed{skipped}")
    return 0 if counts["passed"] and not counts["failed"] else 1


sys.exit(main(Path(sys.argv[1])))
