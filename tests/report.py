"""Runs suites of Python tests, so that none hangs and none spoils the next, and leaves the counts where ./test finds them.

A test case may have two methods for this: state() tells of the program under test when the test has failed, and discard()
ends that program, so that the next test begins with a new one.
"""
import asyncio
import json
import os
import signal
import sys
import traceback
import unittest

SLACK = 90  # seconds beyond a test's own bound, for what stands around its body


class BoundedTest(unittest.IsolatedAsyncioTestCase):
    """A test whose body ends within LONGEST seconds; the error tells where it stood."""
    LONGEST = 60

    def __init__(self, method="runTest"):
        super().__init__(method)
        body = getattr(self, method)

        async def bounded():
            limit = asyncio.timeout(self.LONGEST)
            try:
                async with limit:
                    await body()
            except TimeoutError as error:
                if not limit.expired():
                    raise
                raise TimeoutError(f"the test has not ended after {self.LONGEST} s") from error
        setattr(self, method, bounded)


class Result(unittest.TextTestResult):
    """Tells of the program while it still is as the failed test has left it. A test that does not end for all its
    bounds, or the end of the whole run from outside (SIGTERM, Ctrl-C), is a failure and stops the run with a report."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.at_the_end = lambda: None
        self._test, self._failed = None, False
        for number in (signal.SIGALRM, signal.SIGTERM, signal.SIGINT):
            signal.signal(number, self._give_up)

    def startTest(self, test):
        super().startTest(test)
        self._test, self._failed = test, False
        signal.alarm(getattr(test, "LONGEST", BoundedTest.LONGEST) + SLACK)

    def stopTest(self, test):
        signal.alarm(0)
        if self._failed and hasattr(test, "discard"):
            test.discard()
        super().stopTest(test)

    def addError(self, test, err):
        super().addError(test, err)
        self._tell_state()

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self._tell_state()

    def addSubTest(self, test, subtest, err):
        super().addSubTest(test, subtest, err)
        if err:
            self._tell_state()

    def _tell_state(self):
        if not self._failed and hasattr(self._test, "state"):
            self.stream.writeln("  " + self._test.state().replace("\n", "\n  "))
        self._failed = True

    def _give_up(self, number, frame):
        why = "it does not end" if number == signal.SIGALRM else "the run was stopped in it"
        stack = "".join(traceback.format_stack(frame))
        if self._test:
            self.errors.append((self._test, f"{why}; here it stands:\n{stack}"))
            self._tell_state()
        for task in tasks_now():
            task.print_stack(file=self.stream)
        self.printErrors()
        self.at_the_end()
        os._exit(1)  # without waiting for whatever waits


def tasks_now():
    try:
        return asyncio.all_tasks()
    except RuntimeError:
        return ()  # no loop runs


def load(modules, words=()):
    """Every test of the modules; with words, only tests that have one of them in their names."""
    loader = unittest.TestLoader()
    loader.testNamePatterns = [f"*{word}*" for word in words] or None
    return unittest.TestSuite(loader.loadTestsFromModule(module) for module in modules)


def run(title, suite, path=None, clean_up=lambda: None):
    """Runs the suite, cleans up however it ends, and gives an exit status. The counts go to the file, if one is named, as
    {"passed": n, "failed": [names], "skipped": n}."""
    planned = suite.countTestCases()

    def sum_up(result):
        clean_up()
        cases = [getattr(case, "test_case", case) for case, _ in result.failures + result.errors]
        failed = sorted({case.id().split(".", 2)[-1] for case in cases})  # without the names of the packages
        skipped = len(result.skipped)
        passed = result.testsRun - len(failed) - skipped
        if result.testsRun < planned:
            failed.append(f"{planned - result.testsRun} tests were not run")
        if path:
            with open(path, "w", encoding="utf-8") as file:
                json.dump({"passed": passed, "failed": failed, "skipped": skipped}, file)
        print(f"{title}: {passed} passed, {len(failed)} failed, {skipped} skipped", flush=True)
        return 1 if failed or passed == 0 else 0

    def watched(*arguments):
        result = Result(*arguments)
        result.at_the_end = lambda: sum_up(result)
        return result

    return sum_up(unittest.TextTestRunner(verbosity=2, stream=sys.stdout, resultclass=watched).run(suite))
