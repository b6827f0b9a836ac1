"""Runs suites of Python tests and leaves the counts where ./test finds them."""
import json
import sys
import unittest


def load(modules, words=()):
    """Every test of the modules; with words, only tests that have one of them in their names."""
    loader = unittest.TestLoader()
    loader.testNamePatterns = [f"*{word}*" for word in words] or None
    return unittest.TestSuite(loader.loadTestsFromModule(module) for module in modules)


def run(title, suite, path=None):
    """Runs the suite and gives an exit status. The counts go to the file, if one is named, as
    {"passed": n, "failed": [names], "skipped": n}."""
    result = unittest.TextTestRunner(verbosity=2, stream=sys.stdout).run(suite)
    cases = [getattr(case, "test_case", case) for case, _ in result.failures + result.errors]
    failed = sorted({case.id().split(".", 2)[-1] for case in cases})  # without the names of the packages
    skipped = len(result.skipped)
    passed = result.testsRun - len(failed) - skipped
    if path:
        with open(path, "w", encoding="utf-8") as file:
            json.dump({"passed": passed, "failed": failed, "skipped": skipped}, file)
    print(f"{title}: {passed} passed, {len(failed)} failed, {skipped} skipped")
    return 1 if failed or passed == 0 else 0
