"""How long a program takes from its start until it listens, and what it is and holds then.

python3 -m bench.start native|wine, from bench/run start. Wine runs already, as it does on a desk in use.
"""
import argparse
import re
import statistics
import time
from pathlib import Path

from . import programs
from .programs import ROOT

RUNS = 9
SHIPPED = ROOT / "build/win32/app/shell/wrenlow.exe"


def start(program):
    """Milliseconds until it listens, and the kB it holds a second later; what programs share is counted by parts."""
    with program.running() as pids:
        time.sleep(1)  # it comes to rest
        rollup = Path(f"/proc/{pids[0]}/smaps_rollup").read_text(encoding="ascii")
    return program.took * 1000, int(re.search(r"^Pss: +(\d+)", rollup, re.MULTILINE)[1])


def main():
    parser = argparse.ArgumentParser(prog="bench/run start")
    parser.add_argument("part", choices=["native", "wine"])
    part = parser.parse_args().part
    chosen = programs.native(None)[:2] if part == "native" else programs.wine()
    print("| program | listens after, ms | holds, kB |\n|---|---|---|")
    for program in chosen:
        took, held = (statistics.median(figures) for figures in zip(*(start(program) for _ in range(RUNS))))
        print(f"| {program.name} | {took:.0f} | {held:.0f} |")
    if part == "wine":
        print(f"\nThe 32-bit wrenlow.exe has {SHIPPED.stat().st_size:,} bytes.")


main()
