"""How each kind of step is run. An action is called with the step's log, an open file, and gives a Result."""
import json
import os
import signal
import subprocess
import sys
import textwrap
import time
from pathlib import Path

from tests.e2e.target import OTHERS_TIME, Exe, free_port

from .result import Result

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
RESULTS = BUILD / "test-results"
IN_WINE = [str(ROOT / "tools/in-wine"), str(BUILD / "wine-test")]
FUZZ_SECONDS = 60  # for all targets together
CHECKED = ["base", "os", "core", "app", "features", "desktop", "ui"]
LONGEST = 900     # seconds that any one program may take
TIME_TO_END = 30  # seconds that it has then, to end what it has started
# The port of wrenlow.exe is fixed: whoever starts it for a test holds this lock meanwhile.
WITH_PORT = ["flock", "--wait", str(OTHERS_TIME), Exe.LOCK_FILE]

_running = set()  # each leads a process group of its own, so that it can be stopped with all it started


def stop_all():
    for process in list(_running):
        os.killpg(process.pid, signal.SIGTERM)


def run(log, command, longest=LONGEST):
    """Runs a command, bounded, its output in the log; gives its exit status."""
    log.write(f"$ {textwrap.shorten(' '.join(map(str, command)), 300)}\n")
    log.flush()
    process = subprocess.Popen(command, cwd=ROOT, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
                               start_new_session=True)
    _running.add(process)
    try:
        return process.wait(longest)
    except subprocess.TimeoutExpired:
        stop(process)
        log.write(f"\nstopped after {longest} s\n")
        return 1
    finally:
        _running.discard(process)


def stop(process):
    """Asks the whole group to end first: suites tell what they have so far, and tools/in-wine ends its Wine."""
    for number in (signal.SIGTERM, signal.SIGKILL):
        deadline = time.monotonic() + TIME_TO_END
        try:
            os.killpg(process.pid, number)
            while time.monotonic() < deadline:
                process.poll()  # or its entry would stay in the group
                os.killpg(process.pid, 0)
                time.sleep(0.1)
        except ProcessLookupError:
            return


def build(preset, *targets):
    def action(log):
        configured = run(log, ["cmake", "--preset", preset]) == 0
        wanted = ["--target", *targets] if targets else []
        built = configured and run(log, ["cmake", "--build", "--preset", preset, *wanted]) == 0
        return Result() if built else Result(failed=[f"build {preset}"])
    return action


def test_programs(log, preset):
    """The programs that the build knows as tests (add_test), as (name, command line, whether it owns the port).

    One that says so (RESOURCE_LOCK) runs only while nobody else has the port of wrenlow.exe."""
    listing = subprocess.run(["ctest", "--test-dir", str(BUILD / preset), "--show-only=json-v1"], stdout=subprocess.PIPE,
                             stderr=log, check=True)
    return [(test["name"], test["command"], owns_port(test)) for test in json.loads(listing.stdout)["tests"]]


def owns_port(test):
    return any(entry["name"] == "RESOURCE_LOCK" and "port11080" in entry["value"] for entry in test["properties"])


def google_tests(preset, wine=False):
    """Every test program of a preset; a program that ends early counts as one failure more."""
    def action(log):
        total = Result()
        for name, command, with_port in test_programs(log, preset):
            around = [*(WITH_PORT if with_port else []), *(IN_WINE if wine else [])]
            total += one_google_test(log, f"{name} ({preset})", [*around, *command])
        if wine:
            total.under_wine = total.passed + len(total.failed)
        return total if total.passed or total.failed else Result(failed=[f"no tests in {preset}"])
    return action


def one_google_test(log, name, command):
    report = RESULTS / f"{name}.json"
    report.unlink(missing_ok=True)
    # Relative to the root, which is the working folder: the same path is good for Windows programs.
    output = f"--gtest_output=json:{report.relative_to(ROOT)}"
    status = run(log, [*command, "--gtest_brief=1", output])
    if not report.exists():
        return Result(failed=[f"{name}: ended with status {status} before its report"])
    result = read_google_report(report, name)
    if status != 0 and not result.failed:
        result.failed.append(f"{name}: ended with status {status}")
    return result


def read_google_report(report, name):
    result = Result()
    for suite in json.loads(report.read_text(encoding="utf-8"))["testsuites"]:
        for test in suite["testsuite"]:
            if test.get("failures"):
                result.failed.append(f"{name}: {suite['name']}.{test['name']}")
            elif test.get("result") == "COMPLETED":
                result.passed += 1
            else:
                result.skipped += 1
    return result


def check(name, *command, longest=LONGEST):
    """A program that is one test by itself."""
    def action(log):
        return Result.of(name, run(log, command, longest) == 0)
    return action


def python_check(name, *arguments):
    return check(name, sys.executable, *arguments)


def show_relay(log):
    """./run --relay as a newcomer would, on a port that nobody else has."""
    return check("./run --relay", "./run", "--relay", "--once", "--listen-port", str(free_port()))(log)


def suite(name, package, *arguments, wine=()):
    """Python tests that leave their counts in a file (tests/report.py); `wine` begins their command line, if given."""
    def action(log):
        report = RESULTS / f"{package}-{'-'.join(name.split())}.json"
        report.unlink(missing_ok=True)
        status = run(log, [*wine, sys.executable, "-m", f"tests.{package}", *map(str, arguments), "--json", str(report)])
        if not report.exists():
            return Result(failed=[f"{name}: ended with status {status} before its report"])
        counts = json.loads(report.read_text(encoding="utf-8"))
        failed = [f"{name}: {test}" for test in counts["failed"]]
        return Result(counts["passed"], failed, counts["skipped"], counts["passed"] + len(failed) if wine else 0)
    return action


def end_to_end(target, program, wine=False):
    return suite(f"e2e on the {target}", "e2e", target, BUILD / program, wine=IN_WINE if wine else ())


def aim_client(preset):
    """The program beside an AIM client, on a desk of its own."""
    return suite("AIM client", "desk", BUILD / preset, wine=[*IN_WINE, *WITH_PORT])


def fuzzers(log):
    """Every fuzz target for its share of the time, on its seeds and on what earlier runs have found."""
    targets = sorted(path for path in (BUILD / "fuzz/tests/fuzz").glob("*")
                     if path.is_file() and os.access(path, os.X_OK))
    total = Result()
    for target in targets:
        found = BUILD / "fuzz-corpus" / target.name
        found.mkdir(parents=True, exist_ok=True)
        seeds = [path for path in [ROOT / "tests/fuzz/corpus" / target.name] if path.is_dir()]
        seconds = max(2, FUZZ_SECONDS // len(targets))
        status = run(log, [target, f"-max_total_time={seconds}", "-timeout=20", "-print_final_stats=1", "-verbosity=0",
                           f"-artifact_prefix={found}-crash-", found, *seeds])
        total += Result.of(f"fuzzing {target.name} (the input lies beside {found.relative_to(ROOT)})", status == 0)
    return total if targets else Result(failed=["no fuzz targets were built"])


def icons(log):
    """The .ico files are the ones that were drawn from the .svg files in the tree."""
    script = "app/shell/icons/build-icons"
    return Result.of(f"icons ({script} draws them anew)", run(log, [script, "--check"]) == 0)


def formatting(log):
    """Every source as clang-format would have written it."""
    sources = [str(path.relative_to(ROOT)) for path in sorted(ROOT.rglob("*"))
               if path.suffix in (".h", ".cpp") and path.relative_to(ROOT).parts[0] not in ("build", "dist")]
    return Result.of("formatting (clang-format -i puts it right)",
                     run(log, ["clang-format", "--dry-run", "-Werror", *sources]) == 0)


def tidy(log):
    """clang-tidy on what the native build compiles of the programs; by hand, because it takes minutes."""
    status = run(log, ["run-clang-tidy", "-quiet", "-extra-arg=-Wno-unknown-warning-option", "-p", str(BUILD / "debug"),
                       rf"^{ROOT}/({'|'.join(CHECKED)})/"], longest=3600)
    return Result.of("clang-tidy", status == 0)


def cppcheck(log):
    """The same by another hand. Switched off: what it takes for expensive to copy are views, and a function that is called
    in handlers only (ReportCurrentException) rethrows outside one."""
    status = run(log, ["cppcheck", "--enable=warning,performance,portability", "--std=c++20", "--quiet", "--error-exitcode=1",
                       "-I.", "--suppress=missingIncludeSystem", "--suppress=passedByValue",
                       "--suppress=rethrowNoCurrentException", *CHECKED])
    return Result.of("cppcheck", status == 0)
