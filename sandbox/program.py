"""The program as its user changes it while it runs: its settings and its alias list."""
import os
import subprocess
from pathlib import Path

PATIENCE = 30  # seconds; only bounds what hangs


def listens(port):
    """Whether somebody listens on this port. Read from the kernel: a probe would be one more connection to relay."""
    return f"0100007F:{port:04X} 00000000:0000 0A" in Path("/proc/net/tcp").read_text(encoding="ascii")


class RelaySettings:
    """Of wrenlow-relay, in a file; running programs take a new value at once."""

    def __init__(self, path, file):
        self._command = [os.path.abspath(path), "--settings", file]

    def set(self, name, value):
        subprocess.run([*self._command, "set", name, value], timeout=PATIENCE, check=True)

    def path(self, path):
        """A path of this system as the program knows it."""
        return path


class ExeSettings:
    """Of wrenlow.exe, in the registry of the environment's Wine prefix."""
    KEY = r"HKCU\Software\Wrenlow"

    def set(self, name, value):
        subprocess.run(["wine", "reg", "add", self.KEY, "/v", name, "/d", value, "/f"], stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=PATIENCE, check=True)

    def path(self, path):
        return "Z:" + path.replace("/", "\\")


def write_aliases(folder, data):
    """Puts the alias list into the program's data folder, for connections that begin from now on; None removes it."""
    path = os.path.join(folder, "repl.dat")
    if data is not None:
        with open(path, "wb") as file:
            file.write(data)
    elif os.path.exists(path):
        os.remove(path)
