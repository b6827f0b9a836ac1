"""Runs chosen steps, each lane one after the other, and tells what happens while it happens."""
import sys
import threading
import time
import traceback

from .actions import RESULTS, stop_all
from .result import Result

LOG_LINES_SHOWN = 40


class Schedule:
    def __init__(self, steps):
        self._steps = steps
        self._results = {}
        self._changed = threading.Condition()
        self._started = time.monotonic()

    def run(self):
        """The results by name of step."""
        RESULTS.mkdir(parents=True, exist_ok=True)
        lanes = [threading.Thread(target=self._run_lane, args=(lane,), daemon=True)
                 for lane in sorted({step.lane for step in self._steps})]
        for lane in lanes:
            lane.start()
        try:
            for lane in lanes:
                lane.join()
        except KeyboardInterrupt:
            stop_all()
            raise SystemExit("interrupted") from None
        return self._results

    def _run_lane(self, lane):
        waiting = [step for step in self._steps if step.lane == lane]
        while waiting:
            with self._changed:
                ready = [step for step in waiting if all(need in self._results for need in step.needs)]
                if not ready:
                    self._changed.wait()
                    continue
            step = ready[0]
            waiting.remove(step)
            result = self._run_step(step)
            with self._changed:
                self._results[step.name] = result
                self._changed.notify_all()

    def _run_step(self, step):
        missing = [need for need in step.needs if self._results[need].failed]
        if missing:
            self._say(f"-- {step.title}: not run, because {missing[0]} failed")
            return Result(failed=[f"{step.name}: not run, because {missing[0]} failed"])
        self._say(f".. {step.title}")
        log_path = RESULTS / f"{step.name}.log"
        begin = time.monotonic()
        with open(log_path, "w", encoding="utf-8", errors="replace") as log:
            try:
                result = step.action(log)
            except Exception:  # a step that cannot even be run is a failure, not the end of the others
                log.write(traceback.format_exc())
                result = Result(failed=[f"{step.name}: could not be run"])
        self._tell(step, result, time.monotonic() - begin, log_path)
        return result

    def _tell(self, step, result, seconds, log_path):
        counts = f", {result.passed} passed" if result.passed else ""
        counts += f", {result.skipped} skipped" if result.skipped else ""
        if not result.failed:
            return self._say(f"ok {step.title} ({seconds:.0f} s{counts})")
        lines = log_path.read_text(encoding="utf-8", errors="replace").splitlines()
        self._say(f"FAILED {step.title} ({seconds:.0f} s{counts}, {len(result.failed)} failed); "
                  f"the end of {log_path.relative_to(RESULTS.parents[1])}:\n"
                  + "\n".join("    | " + line for line in lines[-LOG_LINES_SHOWN:]))

    def _say(self, text):
        minutes, seconds = divmod(int(time.monotonic() - self._started), 60)
        sys.stdout.write(f"[{minutes:2}:{seconds:02}] {text}\n")  # one write: two lanes speak
        sys.stdout.flush()
