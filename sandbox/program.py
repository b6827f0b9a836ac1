"""The program as its user changes it while it runs: its settings and its alias list."""
import os
import socket
import subprocess
import tempfile
from pathlib import Path

PATIENCE = 30  # seconds; only bounds what hangs


def listens(port):
    """Whether somebody listens on this port. Read from the kernel: a probe would be one more connection to relay."""
    return f"0100007F:{port:04X} 00000000:0000 0A" in Path("/proc/net/tcp").read_text(encoding="ascii")


def of_windows(name):
    """The path of one of Windows' own programs. When it has to look for one, Wine takes twice as long to start it, and one
    time in a thousand starts none."""
    return rf"C:\windows\system32\{name}.exe"


def run_in_wine(program, *arguments):
    """Runs a Windows program to its end, which is to be a good one."""
    with tempfile.TemporaryFile() as output:  # no pipe: Wine's server may keep it open
        status = subprocess.run(["wine", program, *arguments], stdin=subprocess.DEVNULL, stdout=output,
                                stderr=output, timeout=PATIENCE).returncode
        output.seek(0)
        if status:
            raise RuntimeError(f"{program} {' '.join(arguments)}: status {status}: {output.read().decode(errors='replace')}")


def end_wine():
    """Ends everything in the environment's Wine prefix; the next Windows program begins a new one. For a port that is taken
    though its program was killed: Wine's server can keep the sockets of a killed process that was waiting for them."""
    subprocess.run(["wineserver", "-k"], timeout=PATIENCE, check=False)
    subprocess.run(["wineserver", "-w"], timeout=PATIENCE, check=False)


def wine_state():
    """What can be told of the environment's display and Wine prefix, as lines: whether they answer, and what runs there."""
    def tell(what, path):
        with socket.socket(socket.AF_UNIX) as probe:
            probe.settimeout(PATIENCE)
            try:
                probe.connect(path)
                return f"{what} answers"
            except OSError as error:
                return f"{what} does not answer: {error}"

    def running():
        for process in Path("/proc").glob("[0-9]*"):
            try:
                if f"WINEPREFIX={prefix}".encode() in (process / "environ").read_bytes().split(b"\0"):
                    yield f"{process.name} " + (process / "cmdline").read_bytes().replace(b"\0", b" ").decode(errors="replace")
            except OSError:
                pass  # it has just ended
    prefix, display = os.environ.get("WINEPREFIX", ""), os.environ.get("DISPLAY", "")
    place = os.stat(prefix)
    servers = Path("/tmp").glob(f"*wine-*/server-{place.st_dev:x}-{place.st_ino:x}/socket")
    return [tell(f"the display {display}", f"/tmp/.X11-unix/X{display.lstrip(':').split('.')[0]}"),
            *(tell("the wineserver", str(server)) for server in servers), f"with the prefix {prefix} run:", *running()]


class RelaySettings:
    """Of wrenlow-relay, in a file; running programs take a new value at once."""

    def __init__(self, path, file):
        self._file = Path(file)
        self._command = [os.path.abspath(path), "--settings", file]

    def set(self, name, value):
        subprocess.run([*self._command, "set", name, value], timeout=PATIENCE, check=True)

    def spoil(self):
        """Values and lines that are none."""
        self._file.write_bytes(b"logims\n=1\nlogims = \0\xff\nlogims = " + b"1" * 5000 + b"\nseehtml\0=1\n" + bytes(range(256)))

    def mend(self):
        self._file.unlink()

    def path(self, path):
        """A path of this system as the program knows it."""
        return path


class ExeSettings:
    """Of wrenlow.exe, in the registry of the environment's Wine prefix."""
    KEY = r"HKCU\Software\Wrenlow"

    def set(self, name, value):
        self._reg("add", "/v", name, "/d", value)

    def spoil(self):
        """Values of wrong types and sizes."""
        for name, kind, data in (("logims", "REG_BINARY", "31ff00"), ("seehtml", "REG_MULTI_SZ", "1"),
                                 ("logwhere", "REG_SZ", "x" * 2000), ("logfolder", "REG_DWORD", "0xffffffff")):
            self._reg("add", "/v", name, "/t", kind, "/d", data)

    def mend(self):
        for name in ("logims", "seehtml", "logwhere", "logfolder"):
            self._reg("delete", "/v", name)

    def _reg(self, verb, *arguments):
        run_in_wine(of_windows("reg"), verb, self.KEY, *arguments, "/f")

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
