"""Runs suites of Python tests, so that none hangs and none spoils the next, and leaves a report where ./test finds it.

A test case may have two methods for this: state() tells of the program under test when the test has failed, and discard()
ends that program, so that the next test begins with a new one.
"""
import asyncio
import os
import signal
import sys
import tempfile
import traceback
import unittest
import xml.etree.ElementTree as ElementTree

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

    def folder(self):
        """A new folder, gone again when the test ends."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return folder.name


class Result(unittest.TextTestResult):
    """Tells of the program while it still is as the failed test has left it. A test that does not end for all its
    bounds, or the end of the whole run from outside (SIGTERM, Ctrl-C), is a failure and stops the run with a report."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.at_the_end = lambda: None
        self.begun = []  # names, in their order
        self._test, self._failed = None, False
        for number in (signal.SIGALRM, signal.SIGTERM, signal.SIGINT):
            signal.signal(number, self._give_up)

    def startTest(self, test):
        super().startTest(test)
        self._test, self._failed = test, False
        self.begun.append(name_of(test))
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


def name_of(test):
    """Without the names of the packages."""
    return getattr(test, "test_case", test).id().split(".", 2)[-1]


def write_report(path, names, failed, skipped):
    suite = ElementTree.Element("testsuite")
    for name in names:
        case = ElementTree.SubElement(suite, "testcase", name=name)
        if name in failed or name in skipped:
            ElementTree.SubElement(case, "failure" if name in failed else "skipped")
    ElementTree.ElementTree(suite).write(path)


def run(title, suite, path=None, clean_up=lambda: None):
    """Runs the suite, cleans up however it ends, and gives an exit status. If a file is named, it gets a report (JUnit)."""
    planned = suite.countTestCases()

    def sum_up(result):
        clean_up()
        failed = {name_of(case) for case, _ in result.failures + result.errors}
        skipped = {name_of(case) for case, _ in result.skipped} - failed
        names = list(dict.fromkeys([*result.begun, *failed]))  # a class that cannot be set up has not begun
        if result.testsRun < planned:
            failed.add(f"{planned - result.testsRun} tests were not run")
            names.append(*failed.difference(names))
        if path:
            write_report(path, names, failed, skipped)
        passed = len(names) - len(failed) - len(skipped)
        print(f"{title}: {passed} passed, {len(failed)} failed, {len(skipped)} skipped", flush=True)
        return 1 if failed or passed == 0 else 0

    def watched(*arguments):
        result = Result(*arguments)
        result.at_the_end = lambda: sum_up(result)
        return result

    return sum_up(unittest.TextTestRunner(verbosity=2, stream=sys.stdout, resultclass=watched).run(suite))
