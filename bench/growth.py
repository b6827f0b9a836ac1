"""How the costs grow: per frame with its length, per connection with their number, per frame with the number of aliases.

python3 -m bench.growth, from bench/run growth: measures wrenlow-relay, and haproxy where it has the same to do, and draws
docs/growth.svg with gnuplot. The measured values are kept in build/bench/growth.
"""
import json
import statistics
import subprocess

from . import programs
from .programs import ROOT

OSCARLOAD = ROOT / "build/release/bench/oscarload"
FOLDER = ROOT / "build/bench/growth"
RUNS = 3
PAYLOADS = [26, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65535]  # bytes
IDLE = [1, 10, 100, 1000, 4000, 9000]
ALIASES_FILTER = "Search/text/.*/461$"

PLOT = """
set terminal svg size 1080,320 font "sans,12" background "white"
set output "{picture}"
set multiplot layout 1,3
set key left top
set grid
set logscale xy
set title "CPU per frame"
set xlabel "bytes of payload"
set ylabel "µs"
plot "{folder}/wrenlow-relay-frames" with linespoints title "wrenlow-relay", "{folder}/haproxy-frames" with linespoints title "haproxy"
unset logscale y
set yrange [0:*]
set key right center
set title "Idle connections"
set xlabel "connections"
set ylabel "kB each; µs / 50"
plot "{folder}/wrenlow-relay-memory" with linespoints title "memory", "{folder}/wrenlow-relay-ping" using 1:($2/50) with linespoints title "ping beside them (p50)"
set key right bottom
set title "A message of 461 bytes, no alias in it"
set xlabel "aliases"
set ylabel "ns"
plot "{folder}/wrenlow-relay-aliases" with linespoints title "search"
"""


def load(program, *arguments):
    """The figures of one run on a program that is started for it."""
    programs.wait_for_ports()
    report = FOLDER / "report.json"
    with program.running() as pids:
        subprocess.run([OSCARLOAD, *program.arguments, *map(str, arguments), "--json", report, "--proxy-pid",
                        ",".join(map(str, pids))], stdout=subprocess.DEVNULL, timeout=300, check=True)
    return {name: result["value"] for name, result in json.loads(report.read_text(encoding="utf-8"))["results"].items()}


def save(name, rows):
    print(name, *(f"{x:g}: {y:.4g}" for x, y in rows), sep="\n  ", flush=True)
    (FOLDER / name).write_text("".join(f"{x} {y}\n" for x, y in rows), encoding="ascii")


def frames(program):
    def cost(payload):
        runs = [load(program, "--scenario", "throughput", "--payload", payload, "--seconds", 0.5) for _ in range(RUNS)]
        return statistics.median(run["throughput.both.cpu_s_per_1e6_frames"] for run in runs)  # seconds a million: µs each
    save(f"{program.name}-frames", [(payload, cost(payload)) for payload in PAYLOADS])


def connections(program):
    figures = load(program, "--scenario", "scale", "--idle", ",".join(map(str, IDLE)))
    save(f"{program.name}-memory", [(n, figures[f"scale.idle{n}.kB_per_conn"]) for n in IDLE if n > 10])
    save(f"{program.name}-ping", [(n, figures[f"scale.idle{n}.p50_us"]) for n in IDLE])


def aliases(name):
    output = subprocess.run([ROOT / "build/release/bench/bench_features", f"--benchmark_filter={ALIASES_FILTER}",
                             "--benchmark_format=json"], capture_output=True, check=True).stdout
    save(f"{name}-aliases", [(int(one["name"].split("/")[2]), one["cpu_time"]) for one in json.loads(output)["benchmarks"]])


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    haproxy, relay = (one for one in programs.native(None) if one.name in ("haproxy", "wrenlow-relay"))
    frames(relay)
    frames(haproxy)
    connections(relay)
    aliases(relay.name)
    plot = PLOT.format(folder=FOLDER, picture=ROOT / "docs/growth.svg")
    subprocess.run(["gnuplot"], input=plot, text=True, check=True)


main()
