"""What a step has to say when it is done."""
from dataclasses import dataclass, field


@dataclass
class Result:
    passed: int = 0
    failed: list = field(default_factory=list)  # names, each worth a line
    skipped: int = 0
    under_wine: int = 0  # how many of the tests ran as Windows programs

    def __add__(self, other):
        return Result(self.passed + other.passed, self.failed + other.failed, self.skipped + other.skipped,
                      self.under_wine + other.under_wine)

    @staticmethod
    def of(name, ok):
        """The result of a check that is one test by itself."""
        return Result(passed=1) if ok else Result(failed=[name])
