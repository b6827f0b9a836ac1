"""./test [quick | STEP...]: see ./test --help."""
import sys

from .plan import STEPS, choose, runs_32_bit
from .result import Result
from .schedule import Schedule


def main():
    arguments = sys.argv[1:]
    if "--list" in arguments:
        for step in STEPS:
            print(f"{step.name:15} {step.title}{' (only when named)' if step.on_request else ''}")
        return 0

    steps = choose(arguments)
    results = Schedule(steps).run()
    total = sum(results.values(), Result())
    whole = not arguments
    if whole and not total.under_wine:
        total.failed.append("no test ran under Wine")

    if total.failed:
        print("\nFailed:")
        for name in total.failed:
            print(f"  {name}")
    print()
    if whole:
        i686 = "run too" if runs_32_bit() else "built and statically checked only: there is no 32-bit Wine here"
        print(f"{total.under_wine} tests ran as Windows programs under Wine (x86_64); the i686 build was {i686}.")
    skipped = f", {total.skipped} skipped" if total.skipped else ""
    print(f"{total.passed} passed, {len(total.failed)} failed{skipped}")
    return 1 if total.failed else 0


sys.exit(main())
