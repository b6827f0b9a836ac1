"""The two programs under test, behind one face: started, asked whether they live, and ended as a user would end them."""
import fcntl
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time

from sandbox.program import PATIENCE, ExeSettings, RelaySettings


def listens(port):
    """Whether somebody listens on this port. Read from the kernel: a probe would be one more connection to relay."""
    entry = f"0100007F:{port:04X} 00000000:0000 0A"
    with open("/proc/net/tcp", encoding="ascii") as table:
        return entry in table.read()


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_until(condition, what):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {PATIENCE} s in vain: {what}")
        time.sleep(0.02)


class Program:
    """A started program, its output in a file or going where the test wants it."""

    def __init__(self, command, port, output=None):
        self.port = port
        self._output = tempfile.TemporaryFile()
        self._process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=output or self._output,
                                         stderr=subprocess.STDOUT)

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

    def say(self, line):
        """Types a line into its standard input."""
        self._process.stdin.write(line.encode() + b"\n")
        self._process.stdin.flush()

    def end_input(self):
        self._process.stdin.close()

    def alive(self):
        return self._process.poll() is None

    def wait_until_listening(self):
        wait_until(lambda: listens(self.port) or not self.alive(), "the program does not listen")
        if not self.alive():
            raise RuntimeError(f"ended with status {self._process.returncode} at once:\n{self.output()}")

    def wait(self):
        """The exit status."""
        return self._process.wait(PATIENCE)

    def ask_to_end(self):
        self._process.send_signal(signal.SIGTERM)

    def kill(self):
        self._process.stdin.close()
        if self.alive():
            self._process.kill()
            self._process.wait()


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

    def start(self, port=None, output=None, data=None):
        """On a free port, or on the given one; does not wait until it listens."""
        port = port or free_port()
        return Program([self.path, "--data", data or self.data, "--settings", self._settings_file,
                        "--listen-port", str(port)], port, output)

    def close(self):
        self._folder.cleanup()


class WindowsProgram(Program):
    def ask_to_end(self):
        # Closes the hidden main window, as the tray menu does in the end. (A signal would only hit Wine's loader.)
        subprocess.run(["wine", "taskkill", "/im", "wrenlow.exe"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       timeout=PATIENCE, check=True)


class Exe:
    """wrenlow.exe under Wine, in the prefix and on the display of the environment. Its port is fixed, so that only
    one test run on the machine can have it at a time. It runs as a copy in `data`, because it looks for its alias
    list beside itself."""
    name = "exe"
    PORT = 11080
    LOCK_FILE = os.path.join(tempfile.gettempdir(), "port11080.lock")

    def __init__(self, path):
        self.path = os.path.abspath(path)
        if "WINEPREFIX" not in os.environ:
            raise SystemExit("WINEPREFIX is not set; ./test e2e-exe sees to it")
        self._lock = open(self.LOCK_FILE, "w", encoding="ascii")
        fcntl.flock(self._lock, fcntl.LOCK_EX)
        self._folder = tempfile.TemporaryDirectory()
        self.data = self._folder.name
        self._copy = shutil.copy(path, self.data)
        self.settings = ExeSettings()

    def start(self, port=PORT):
        assert port == self.PORT
        return WindowsProgram(["wine", self._copy, "d"], port)  # d: no update check at the start

    def close(self):
        self._folder.cleanup()
        self._lock.close()
