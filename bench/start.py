"""How long a program takes from its start until it listens, and what it is and holds then.

python3 -m bench.start native|wine, from bench/run start. Wine runs already, as it does on a desk in use.
"""
import argparse
import contextlib
import re
import statistics
import subprocess
import time
from pathlib import Path

from tests.e2e.target import listens

from . import programs
from .programs import ROOT

RUNS = 9
PATIENCE = 30    # seconds
STEP = 0.0005    # seconds between two looks
SHIPPED = ROOT / "build/win32/app/shell/wrenlow.exe"


def held(pids):
    """Of memory, in kB; what programs share is counted by parts."""
    rollup = Path(f"/proc/{pids[0]}/smaps_rollup").read_text(encoding="ascii")
    return int(re.search(r"^Pss: +(\d+)", rollup, re.MULTILINE)[1])


def start(program):
    """Milliseconds until it listens, and the kB it holds a second later."""
    command = program.command()
    began = time.monotonic()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        while not listens(program.port):
            if time.monotonic() > began + PATIENCE:
                raise RuntimeError(f"{program.name} does not listen")
            time.sleep(STEP)
        took = (time.monotonic() - began) * 1000
        time.sleep(1)  # it comes to rest
        return took, held(program.pids(process))
    finally:
        process.terminate()
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(PATIENCE)
        process.kill()
        process.wait()


def main():
    parser = argparse.ArgumentParser(prog="bench/run start")
    parser.add_argument("part", choices=["native", "wine"])
    part = parser.parse_args().part
    chosen = programs.native(None)[:2] if part == "native" else programs.wine()
    print("| program | listens after, ms | holds, kB |\n|---|---|---|")
    for program in chosen:
        runs = [start(program) for _ in range(RUNS)]
        print(f"| {program.name} | {statistics.median(run[0] for run in runs):.0f} | {statistics.median(run[1] for run in runs):.0f} |")
    if part == "wine":
        print(f"\nThe 32-bit wrenlow.exe has {SHIPPED.stat().st_size:,} bytes.")


main()
