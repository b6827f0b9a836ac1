"""The steps of ./test, in the order in which they are worth doing.

Two lanes run side by side: one builds, the other checks what is already built.
"""
import os
import sys
from dataclasses import dataclass, field

from . import actions
from .actions import IN_WINE, WITH_PORT, build, check, end_to_end, google_tests, python_check

WINE32 = "/usr/lib/wine/wine"  # Debian's 32-bit loader, there when wine32:i386 is installed


@dataclass
class Step:
    name: str
    title: str
    action: object
    needs: list = field(default_factory=list)
    lane: str = "check"
    on_request: bool = False  # only when named


def runs_32_bit():
    return os.path.exists(WINE32)


def builder(name, title, action, **options):
    return Step(name, title, action, lane="build", **options)


STEPS = [
    # The longest checks are those of the 64-bit Windows programs, so these are built first.
    builder("build-win64", "Build: Windows, 64-bit", build("win64")),
    builder("build-asan", "Build: native, under the sanitizers", build("asan")),
    builder("build-fuzz", "Build: fuzz targets (clang)", build("fuzz")),
    # Of these two only what is going to be run.
    builder("build-release", "Build: wrenlow-relay, release", build("release", "app/shell/wrenlow-relay")),
    builder("build-win32", "Build: Windows, 32-bit (what ships)",
            build("win32", *([] if runs_32_bit() else ["app/shell/wrenlow.exe"]))),

    Step("layers", "Include direction, file sizes", python_check("include direction", "tests/check_layers.py")),
    Step("layers-self", "The include check finds faults",
         python_check("the include check itself", "tests/check_layers_test.py")),
    Step("imports-self", "The import check finds faults",
         python_check("the import check itself", "tests/check_imports_test.py")),
    Step("icons", "Icons drawn from the sources that lie beside them", actions.icons),
    Step("format", "Formatting", actions.formatting),
    Step("sandbox", "The sandbox by itself", python_check("the sandbox itself", "-m", "tests.sandbox_test")),
    Step("native", "Unit and contract tests, native, under the sanitizers", google_tests("asan"), ["build-asan"]),
    Step("e2e-relay", "End to end: wrenlow-relay, under the sanitizers",
         end_to_end("relay", "asan/app/shell/wrenlow-relay"), ["build-asan"]),
    Step("soak", "Soak: mixed sessions on wrenlow-relay for 30 s",
         python_check("soak", "-m", "tests.soak", "relay", "build/release/app/shell/wrenlow-relay", "--seconds", "30"),
         ["build-release"]),
    Step("wine", "The same tests as Windows programs under Wine", google_tests("win64", wine=True), ["build-win64"]),
    Step("e2e-exe", "End to end: wrenlow.exe under Wine",
         end_to_end("exe", "win64/app/shell/wrenlow.exe", wine=True), ["build-win64"]),
    Step("soak-exe", "Soak: mixed sessions and dialogs on wrenlow.exe for 15 s",
         check("soak of the exe", *IN_WINE, sys.executable, "-m", "tests.soak", "exe", "build/win64/app/shell/wrenlow.exe",
               "--seconds", "15"), ["build-win64"]),
    Step("aim", "Control of an AIM client by wrenlow.exe under Wine", actions.aim_client("win64"), ["build-win64"]),
    Step("run-exe", "./run shows wrenlow.exe", check("./run", *WITH_PORT, "./run", "--once"), ["build-win64"]),
    Step("run-relay", "./run --relay shows wrenlow-relay", actions.show_relay, ["build-release"]),
    Step("fuzz", f"Fuzzers, {actions.FUZZ_SECONDS} s in all", actions.fuzzers, ["build-fuzz"]),
    Step("imports", "What the Windows programs import",
         python_check("import tables", "tests/check_imports.py", "build/win32/app/shell/wrenlow.exe",
                      "build/win64/app/shell/wrenlow.exe"), ["build-win32", "build-win64"]),
    Step("downloads", "The downloads as files", python_check("the downloads", "-m", "tests.packaging.downloads_test"),
         ["build-win32", "build-win64", "build-release"]),
    Step("setup", "Setup program: install, update, uninstall under Wine",
         check("the setup program", *WITH_PORT, *IN_WINE, sys.executable, "-m", "tests.packaging.setup_test"),
         ["build-win64"]),

    Step("rebuild", "tools/release in two places gives the same bytes",
         check("rebuilding", "tests/packaging/rebuild", longest=4 * actions.LONGEST), on_request=True),
    builder("build-debug", "Build: native, debug", build("debug"), on_request=True),
    Step("cppcheck", "cppcheck", actions.cppcheck, on_request=True),
    Step("tidy", "clang-tidy", actions.tidy, ["build-debug"], on_request=True),
]
if runs_32_bit():
    STEPS.append(Step("wine32", "Windows tests, 32-bit, under Wine", google_tests("win32", wine=True), ["build-win32"]))

QUICK = ["layers", "layers-self", "imports-self", "icons", "format", "sandbox", "native", "e2e-relay"]


def choose(names):
    """The steps with these names and what they need; every regular step when there are no names."""
    by_name = {step.name: step for step in STEPS}
    if not names:
        return [step for step in STEPS if not step.on_request]
    wanted = set()
    waiting = [name for word in names for name in (QUICK if word == "quick" else [word])]
    while waiting:
        name = waiting.pop()
        if name not in by_name:
            raise SystemExit(f"no step {name!r}; there are: quick {' '.join(by_name)}")
        wanted.add(name)
        waiting += by_name[name].needs
    return [step for step in STEPS if step.name in wanted]
