"""The two programs under test, behind one face: started, asked whether they live, and ended as a user would end them."""
import contextlib
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import sys
import time

from sandbox.program import (PATIENCE, ExeSettings, RelaySettings, end_wine, listens, of_windows, run_in_wine,
                             wine_state)
from tests.e2e.measure import describe

LINES_TOLD = 60  # of sockets and of output, when a test has failed


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_until(condition, what, patience=PATIENCE, step=0.02):
    deadline = time.monotonic() + patience
    while not condition():
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {patience} s in vain: {what}")
        time.sleep(step)


class Program:
    """A started program, its output in a file or going where the test wants it. `all` has those that may still run."""
    all = set()

    def __init__(self, command, port, output=None, stdin=subprocess.PIPE):
        self.port = port
        self.bystander = None  # see accompany
        self.all.add(self)
        self._output = tempfile.TemporaryFile()
        self._process = subprocess.Popen(command, stdin=stdin, stdout=output or self._output, stderr=subprocess.STDOUT)

    @property
    def pid(self):
        return self._process.pid

    @property
    def address(self):
        return "127.0.0.1", self.port

    def output(self):
        # Without moving the place in the file, which is also where the program writes next.
        file = self._output.fileno()
        return os.pread(file, os.fstat(file).st_size, 0).decode(errors="replace")

    def reports(self):
        """The errors it has told of, as lines."""
        return [line for line in self.output().splitlines() if line.startswith("error ")]

    def say(self, line, end="\n"):
        """Types a line into its standard input."""
        self._process.stdin.write((line + end).encode())
        self._process.stdin.flush()

    def end_input(self):
        self._process.stdin.close()

    def alive(self):
        return self._process.poll() is None

    def state(self):
        """What can be told of it after a failure: where its threads stand, its sockets, its output."""
        if self.alive():
            lines = [f"the program runs as process {self.pid}:", *describe(self.pid, self.port)][:LINES_TOLD]
        else:
            lines = [f"the program has ended with status {self._process.returncode}"]
        output = self.output().splitlines()[-LINES_TOLD:]
        return "\n".join(lines + [f"its output ends so:" if output else "it has written nothing", *output])

    def accompany(self):
        """Begins a conversation through it, which goes on beside whatever a test does."""
        self.bystander = Bystander(self.port)

    def wait_until_listening(self):
        wait_until(lambda: listens(self.port) or not self.alive(), "the program does not listen")
        if not self.alive():
            raise RuntimeError(f"ended at once: {self.state()}")

    def expect_end(self):
        """From now on the program may close the bystander's conversation."""
        self.bystander.expect_end()

    def wait(self):
        """The exit status. The bystander's conversation, if there is one, was undisturbed to the end."""
        status = self._process.wait(PATIENCE)
        if self.bystander:
            self.bystander.see_the_end()
        return status

    def ask_to_end(self, number=signal.SIGTERM):
        self.expect_end()
        self._process.send_signal(number)

    def kill(self):
        """Ends it, whatever it does."""
        if self.bystander:
            self.bystander.kill()
        self._process.kill()
        self._process.wait(PATIENCE)
        self.all.discard(self)
        with contextlib.suppress(AttributeError, BrokenPipeError):  # no pipe, or not all that was typed has been read
            self._process.stdin.close()


class Bystander:
    """The process of a conversation (tests/e2e/bystander.py)."""

    def __init__(self, port):
        command = [sys.executable, "-m", "tests.e2e.bystander", str(port)]
        # Ctrl-C is not for it: it ends with its standard input.
        self._process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True)
        self.told = 0
        self.how_it_goes()

    def how_it_goes(self):
        """Waits until what is said from now on has come through, too. Gives how many seconds a message took at most since
        this was asked before."""
        return self._answer(b"how is it going?\n")

    def expect_end(self):
        self._answer(b"until the end\n")

    def see_the_end(self):
        """Of the conversation, which the program has ended without losing anything."""
        self._hear()
        self.kill()

    def kill(self):
        self._process.kill()
        self._process.wait(PATIENCE)
        for stream in (self._process.stdin, self._process.stdout):
            stream.close()

    def _answer(self, question):
        try:
            self._process.stdin.write(question)
            self._process.stdin.flush()
        except BrokenPipeError:
            pass  # it has something to say
        return self._hear()

    def _hear(self):
        answer = self._process.stdout.readline().decode().strip()  # comes, because it waits for nothing without a bound
        if not answer.startswith("well "):
            raise AssertionError(f"the conversation beside the test was disturbed: {answer or 'it has ended'}")
        self.told, seconds = int(answer.split()[1]), float(answer.split()[2])
        return seconds


class Relay:
    """wrenlow-relay, the native program: any number of instances, each on a port of its own. `data` is the folder
    where it looks for its alias list."""
    name = "relay"

    def __init__(self, path):
        self.path = os.path.abspath(path)
        self._folder = tempfile.TemporaryDirectory()
        self.data = self._folder.name
        self._settings_file = f"{self.data}/settings"
        self.settings = RelaySettings(path, self._settings_file)

    def start(self, port=None, data=None, closed="", options=(), **streams):
        """On a free port, or on the given one; does not wait until it listens. `closed` are redirections of the shell."""
        port = port or free_port()
        return Program(["sh", "-c", f'exec "$0" "$@" {closed}', self.path, "--data", data or self.data, "--settings", self._settings_file,
                        "--listen-port", str(port), *options], port, **streams)

    def verdict(self, program):
        """What the program says of the last sign-on."""
        before = program.output()
        program.say("why")
        wait_until(lambda: "What to do:" in program.output()[len(before):], "no answer to why")
        lines = program.output()[len(before):].splitlines()
        return lines[next(i for i, line in enumerate(lines) if line.startswith("What to do:")) - 1]

    def renew(self):
        """After a failure, whatever may be left of it besides the program itself."""

    def close(self):
        self._folder.cleanup()


class WindowsProgram(Program):
    def state(self):
        return "\n".join([super().state(), *wine_state()])

    def kill(self):
        super().kill()
        if listens(self.port):
            end_wine()
        wait_until(lambda: not listens(self.port), f"port {self.port} is still taken")

    def ask_to_end(self):
        self.expect_end()
        # Closes the hidden main window, as the tray menu does in the end. (A signal would only hit Wine's loader.)
        run_in_wine(of_windows("taskkill"), "/im", "wrenlow.exe")


class Exe:
    """wrenlow.exe under Wine, in the prefix and on the display of the environment. Its port is fixed, so that
    ./test lets only one run on the machine have it at a time. It runs as a copy in `data`, because it looks for its alias
    list beside itself."""
    name = "exe"
    PORT = 11080

    def __init__(self, path):
        self.path = os.path.abspath(path)
        if "WINEPREFIX" not in os.environ:
            raise SystemExit("WINEPREFIX is not set; ./test e2e-exe sees to it")
        self._folder = tempfile.TemporaryDirectory()
        self.data = self._folder.name
        self._copy = shutil.copy(path, self.data)
        self.hand = os.path.join(os.path.dirname(self.path), "../../sandbox/hand/hand.exe")
        self.settings = ExeSettings()

    def start(self, port=PORT):
        assert port == self.PORT
        if listens(port):
            raise RuntimeError(f"port {port} is taken, by a program that another run has left")
        # Of Wine the errors are wanted: a program that ends at its start has nothing else to say. d: no update check.
        return WindowsProgram(["env", "WINEDEBUG=fixme-all", "wine", self._copy, "d"], port)

    def renew(self):
        end_wine()

    def close(self):
        self._folder.cleanup()
