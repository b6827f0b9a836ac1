"""The programs that are measured. Each is started on a port and stopped again, and knows how oscarload reaches it."""
import contextlib
import os
import subprocess
import tempfile
import time
from pathlib import Path

from sandbox.program import run_in_wine
from tests.e2e.target import Exe, free_port, listens, wait_until

ROOT = Path(__file__).resolve().parents[1]
RELAY = ROOT / "build/release/app/relay/wrenlow-relay"
EXE = ROOT / "build/win64/app/shell/wrenlow.exe"

HAPROXY = """
global
    nbthread 1
    maxconn 9900
defaults
    mode tcp
    timeout connect 10s
    timeout client 10m
    timeout server 10m
listen relay
    bind 127.0.0.1:{port}
    server bench 127.0.0.1:{server}
"""

DANTE = """
internal: 127.0.0.1 port = {port}
external: lo
clientmethod: none
socksmethod: none
user.privileged: root
user.unprivileged: nobody
client pass {{ from: 127.0.0.0/8 to: 0.0.0.0/0 }}
socks pass {{ from: 127.0.0.0/8 to: 0.0.0.0/0 }}
"""


class Direct:
    """No proxy: the limit of the machine."""
    name = "direct"
    arguments = ["--direct"]

    @contextlib.contextmanager
    def running(self):
        yield []


class Process:
    """A proxy that runs in the foreground; gives the processes whose CPU time and memory are its own."""
    port = None
    took = None  # seconds from its start until it listened

    def __init__(self, name, command):
        self.name = name
        self._command = command
        self._folder = tempfile.TemporaryDirectory(prefix="wrenlow-bench-")

    def command(self):
        self.port = free_port()
        return [word.format(port=self.port, folder=self._folder.name) for word in self._command]

    @property
    def arguments(self):
        return ["--socks4", "--proxy", f"127.0.0.1:{self.port}"]

    def pids(self, process):
        return [process.pid]

    @contextlib.contextmanager
    def running(self):
        command = self.command()
        began = time.monotonic()
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            wait_until(lambda: listens(self.port), f"{self.name} does not listen", step=0.0005)
            self.took = time.monotonic() - began
            yield self.pids(process)
        finally:
            process.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(5)
            process.kill()
            process.wait()

    def write(self, text, name="configuration"):
        path = Path(self._folder.name) / name
        path.write_text(text, encoding="ascii")
        return str(path)


class Haproxy(Process):
    def __init__(self):
        super().__init__("haproxy", [])
        self._server = None

    def command(self):
        self.port, self._server = free_port(), free_port()
        return ["/usr/sbin/haproxy", "-db", "-f", self.write(HAPROXY.format(port=self.port, server=self._server))]

    @property
    def arguments(self):
        return ["--direct", "--proxy", f"127.0.0.1:{self.port}", "--listen", str(self._server)]


class Dante(Process):
    def __init__(self):
        super().__init__("dante", [])

    def command(self):
        self.port = free_port()
        return ["/usr/sbin/danted", "-f", self.write(DANTE.format(port=self.port)), "-p", f"{self._folder.name}/pid"]


def relay(name, path, **settings):
    options = [word for setting, value in settings.items() for word in ("--set", f"{setting}={value}")]
    return Process(name, [str(path), "--listen-port", "{port}", "--data", "{folder}", "--settings", "{folder}/settings", *options])


class WineProcess(Process):
    """Under Wine the server of the prefix works for every event too."""

    def pids(self, process):
        return [process.pid, *wine_servers()]


class WrenlowExe(WineProcess):
    """Its port is fixed: one at a time on the machine."""

    def __init__(self, exe, name="wrenlow.exe"):
        super().__init__(name, ["wine", exe.path, "d"])
        self._exe = exe

    def command(self):
        self.port = Exe.PORT
        wait_until(lambda: not listens(self.port), "the port is taken")
        return self._command

    def pids(self, process):
        self.prepare()
        return super().pids(process)

    def prepare(self):
        """What is done in it before it is measured."""


class TrafficOpen(WrenlowExe):
    """With the page in front on which every frame is a line."""

    def prepare(self):
        for command in ("open", "keys 17 9"):  # Ctrl+Tab
            run_in_wine(self._exe.hand, *command.split())


def wine_servers():
    """The processes of the wineserver of this prefix."""
    wanted = b"WINEPREFIX=" + os.environ["WINEPREFIX"].encode()
    found = []
    for entry in Path("/proc").iterdir():
        with contextlib.suppress(OSError):
            if "wineserver" in os.readlink(entry / "exe") and wanted in (entry / "environ").read_bytes().split(b"\0"):
                found.append(int(entry.name))
    return found


def native(baseline):
    programs = [Haproxy(), relay("wrenlow-relay", RELAY), Dante(), Direct()]
    return programs + ([relay("before", baseline)] if baseline else [])


def features():
    """The relay with one feature each, the first without any."""
    aliases = relay("500 aliases", RELAY)
    aliases.write("".join(f"buddy number {n}\r\nAlias {n}\r\n" for n in range(500)), "repl.dat")
    return [relay("no feature", RELAY), aliases, relay("messages", RELAY, keepmessages="1", fetchmessages="1"), relay("neither", RELAY, fetchmessages="0"),
            relay("logging", RELAY, logims="1", logwhere="{folder}"),
            relay("see profile HTML", RELAY, seehtml="1")]


def wine():
    return [WineProcess("winrelay", ["wine", str(ROOT / "build/win64/bench/winrelay.exe"), "{port}"]), WrenlowExe(Exe(EXE))]


def traffic():
    """wrenlow.exe beside itself with the page Traffic open."""
    exe = Exe(EXE)  # holds the lock of the port
    return [WrenlowExe(exe), TrafficOpen(exe, "page open")]


def wait_for_ports():
    """Waits (a minute at most) until earlier runs have left few ports in TIME_WAIT: a proxy could run out of them."""
    for _ in range(60):
        words = Path("/proc/net/sockstat").read_text(encoding="ascii").split()
        if int(words[words.index("tw") + 1]) < 8000:
            return
        time.sleep(1)
