"""python3 -m tests.e2e relay|exe PATH: runs every test against one program and tells the counts in the end.

--json FILE writes them as {"passed": n, "failed": [names], "skipped": n}. -k WORD runs only tests with that word in
their names.
"""
import argparse
import logging
import sys

from tests import report
from tests.e2e import (support, test_aliases, test_bad_input, test_commands, test_end, test_faults, test_frames,
                       test_handshake, test_hotkeys, test_load, test_logs, test_machine,
                       test_profile, test_sign_on)
from tests.e2e.target import Exe, Relay

# test_end ends the program; test_hotkeys starts it anew with settings of its own.
MODULES = [test_sign_on, test_handshake, test_frames, test_commands, test_aliases, test_profile, test_logs, test_faults,
           test_bad_input, test_load, test_machine, test_end, test_hotkeys]


def main():
    parser = argparse.ArgumentParser(prog="python3 -m tests.e2e", description=__doc__)
    parser.add_argument("target", choices=["relay", "exe"])
    parser.add_argument("path")
    parser.add_argument("--json")
    parser.add_argument("-k", action="append", default=[])
    arguments = parser.parse_args()

    logging.getLogger("asyncio").setLevel(logging.ERROR)  # a slow turn of the loop is no news on a busy machine
    support.target = {"relay": Relay, "exe": Exe}[arguments.target](arguments.path)
    support.program = support.target.start()
    try:
        support.program.wait_until_listening()
        return report.run(f"e2e on the {arguments.target}", report.load(MODULES, arguments.k), arguments.json)
    finally:
        told = support.Bystanders
        print(f"bystanders: {told.told} messages, the longest took {told.longest * 1000:.0f} ms {told.longest_in}")
        support.program.kill()
        support.target.close()


sys.exit(main())
