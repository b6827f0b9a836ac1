"""python3 -m tests.desk BUILD: wrenlow.exe beside an AIM client on a real desk under Wine; the last line has the counts.

BUILD is the build tree of a Windows preset. --junit FILE writes a report, -k WORD chooses tests by name.
"""
import argparse
import logging
import sys
from pathlib import Path

from tests import report
from tests.desk import test_aim_client, test_program, test_updates

MODULES = [test_aim_client, test_program, test_updates]


def main():
    parser = argparse.ArgumentParser(prog="python3 -m tests.desk", description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("--junit")
    parser.add_argument("-k", action="append", default=[])
    arguments = parser.parse_args()

    logging.getLogger("asyncio").setLevel(logging.ERROR)  # a slow turn of the loop is no news on a busy machine
    test_aim_client.Desk.build = arguments.build.resolve()
    return report.run("the program on a desk", report.load(MODULES, arguments.k), arguments.junit)


sys.exit(main())
