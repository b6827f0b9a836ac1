"""python3 -m tests.e2e relay|exe PATH: runs every test against one program and tells the counts in the end.

--junit FILE writes a report. -k WORD runs only tests with that word in their names.
"""
import argparse
import logging
import sys

from tests import report
from tests.e2e import (support, test_aliases, test_bad_input, test_buddies, test_commands, test_end, test_faults,
                       test_load, test_logs, test_sign_on, test_waiting, test_why)
from tests.e2e.target import Exe, Program, Relay

MODULES = [test_sign_on, test_commands, test_aliases, test_logs, test_faults, test_bad_input, test_load, test_waiting,
           test_buddies, test_why, test_end]


def main():
    parser = argparse.ArgumentParser(prog="python3 -m tests.e2e", description=__doc__)
    parser.add_argument("target", choices=["relay", "exe"])
    parser.add_argument("path")
    parser.add_argument("--junit")
    parser.add_argument("-k", action="append", default=[])
    arguments = parser.parse_args()

    logging.getLogger("asyncio").setLevel(logging.ERROR)  # a slow turn of the loop is no news on a busy machine
    support.target = {"relay": Relay, "exe": Exe}[arguments.target](arguments.path)
    return report.run(f"e2e on the {arguments.target}", report.load(MODULES, arguments.k), arguments.junit, clean_up)


def clean_up():
    told = support.Bystanders
    print(f"bystanders: {told.messages} messages, the longest took {told.longest * 1000:.0f} ms in {told.longest_in}")
    for program in list(Program.all):
        program.kill()
    support.target.close()


sys.exit(main())
