"""python3 -m bench native|wine|features: see bench/run --help."""
import argparse
import contextlib
import json
import os
import platform
import re
import statistics
import subprocess
import time
from pathlib import Path

from . import programs
from .programs import ROOT

OSCARLOAD = ROOT / "build/release/bench/oscarload"
SCENARIOS = "throughput,latency,rate,scale,churn,backpressure,split"
LONGEST = 300  # seconds that one scenario may take


def measure(program, scenario, load, report):
    """One scenario on a program that is started for it, so that nothing of another one is in the figures."""
    programs.wait_for_ports()
    with program.running() as pids:
        command = [OSCARLOAD, *program.arguments, "--scenario", scenario, *load, "--label", program.name, "--json", report]
        if pids:
            command += ["--proxy-pid", ",".join(map(str, pids))]
        print("==", program.name, scenario, flush=True)
        subprocess.run(command, timeout=LONGEST, check=False)  # its failures are in the report


def collect(folder):
    """{figure: {program: median}}, {figure: unit}, and the failures as lines."""
    values, units, failures = {}, {}, set()
    for path in sorted(folder.glob("*.json"), key=lambda path: path.stat().st_mtime_ns):
        data = json.loads(path.read_text(encoding="utf-8"))
        failures |= {f"{data['label']}: {failure}" for failure in data["failures"]}
        for figure, result in data["results"].items():
            values.setdefault(figure, {}).setdefault(data["label"], []).append(result["value"])
            units[figure] = result["unit"]
    medians = {figure: {name: statistics.median(each) for name, each in by_name.items()}
               for figure, by_name in values.items()}
    return medians, units, sorted(failures)


def table(folder, names):
    """The first name is the base of the ratios."""
    medians, units, failures = collect(folder)
    lines = ["| figure | unit | " + " | ".join(names) + " |", "|---" * (len(names) + 2) + "|"]
    for figure, by_name in medians.items():
        base = by_name.get(names[0])
        cells = []
        for name in names:
            value = by_name.get(name)
            ratio = f" (x{value / base:.2f})" if base and value is not None and name != names[0] else ""
            cells.append("-" if value is None else f"{value:.4g}{ratio}")
        lines.append(f"| {figure} | {units[figure]} | " + " | ".join(cells) + " |")
    return "\n".join([*lines, *(f"- {failure}" for failure in failures)])


def machine():
    """What the figures were measured on: they hold there."""
    def first(path, pattern):
        with contextlib.suppress(OSError):
            return next(iter(re.findall(pattern, Path(path).read_text(encoding="utf-8"), re.M)), "unknown")
        return "unknown"
    caches = Path("/sys/devices/system/cpu/cpu0/cache")
    sizes = {first(index / "level", r".+"): first(index / "size", r".+") for index in sorted(caches.glob("index*"))}
    processor = first("/proc/cpuinfo", r"^model name\s*: (.+)")
    return (f"{processor}, {os.cpu_count()} processors, "
            f"L2 {sizes.get('2', 'unknown')}, L3 {sizes.get('3', 'unknown')}, "
            f"kernel {platform.release()}, load {os.getloadavg()[0]:.1f} at the end")


def main():
    parser = argparse.ArgumentParser(prog="bench/run")
    parser.add_argument("part", choices=["native", "wine", "features", "traffic"])
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=1)
    parser.add_argument("--scenarios")
    parser.add_argument("--only", default="")
    parser.add_argument("--baseline")
    options = parser.parse_args()

    chosen = {"native": lambda: programs.native(options.baseline), "wine": programs.wine,
              "features": programs.features, "traffic": programs.traffic}[options.part]()
    scenarios = options.scenarios or {"features": "throughput", "traffic": "throughput,pace"}.get(options.part, SCENARIOS)
    load = ["--seconds", str(options.seconds)] + (["--text"] if options.part == "features" else [])
    if options.only:
        chosen = [program for program in chosen if program.name in options.only.split(",")]
    folder = ROOT / "build/bench" / f"{options.part}-{time.strftime('%Y%m%d-%H%M%S')}"
    folder.mkdir(parents=True)
    for turn in range(options.runs):
        # Alternating, so that what drifts on the machine hits all of them.
        for program in chosen if turn % 2 == 0 else reversed(chosen):
            for scenario in scenarios.split(","):
                measure(program, scenario, load, folder / f"{program.name}-{scenario}-{turn}.json")
    text = machine() + "\n\n" + table(folder, [program.name for program in chosen])
    (folder / "table.md").write_text(text + "\n", encoding="utf-8")
    print(text)


main()
