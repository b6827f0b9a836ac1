"""A user's Windows, as far as a setup program concerns it: registry, programs, folders. Stands on the Wine prefix and
the display of the environment (tools/in-wine)."""
import os
import re
import subprocess
import tempfile
from pathlib import Path

from sandbox.program import PATIENCE, of_windows

UNINSTALL_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Wrenlow"
RUN_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Run"
SETTINGS_KEY = r"HKCU\Software\Wrenlow"
PROXY_KEY = r"HKCU\Software\America Online\AOL Instant Messenger (TM)\CurrentVersion\Proxy"

LONGEST = 2 * PATIENCE
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8"}  # paths with letters beyond ASCII reach Windows as they are


def run(*command):
    """The exit status of a Windows program."""
    return subprocess.run(["wine", *map(str, command)], env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=LONGEST).returncode


def run_line(line):
    """The same of a command line that reaches Windows as it stands, without quotes of ours; ASCII only."""
    with tempfile.TemporaryDirectory() as folder:
        batch = Path(folder, "line.bat")
        batch.write_text(line + "\r\n", encoding="ascii")
        return run(of_windows("cmd"), "/c", windows_path(batch))


def windows_path(path):
    return subprocess.run(["winepath", "-w", str(path)], env=ENVIRONMENT, capture_output=True, text=True, check=True,
                          timeout=LONGEST).stdout.strip()


def drive_c():
    return Path(os.environ["WINEPREFIX"], "drive_c")


def local_programs():
    """Where a program for one user belongs."""
    user = subprocess.run(["wine", of_windows("cmd"), "/c", "echo %LOCALAPPDATA%"], env=ENVIRONMENT, capture_output=True, text=True,
                          check=True, timeout=LONGEST).stdout.strip()
    return drive_c() / user.removeprefix("C:\\").replace("\\", "/") / "Programs"


def values(key):
    """The values of a registry key by name, texts as they are and numbers as numbers; None without such a key."""
    with tempfile.TemporaryDirectory() as folder:
        exported = Path(folder, "key.reg")
        run(of_windows("reg"), "export", key, windows_path(exported), "/y")
        if not exported.exists():
            return None
        text = exported.read_text(encoding="utf-16")
    found = {}
    for name, number, quoted in re.findall(r'^"(.+?)"=(?:dword:([0-9a-f]+)|"(.*)")\r?$', text.split("\n\n")[1], re.M):
        found[name] = int(number, 16) if number else re.sub(r"\\(.)", r"\1", quoted)
    return found


def write(key, name, value):
    kind = "REG_DWORD" if isinstance(value, int) else "REG_SZ"
    if run(of_windows("reg"), "add", key, "/v", name, "/t", kind, "/d", value, "/f") != 0:
        raise RuntimeError(f"{key}\\{name} cannot be written")


def remove(key):
    run(of_windows("reg"), "delete", key, "/f")


def start(program, *arguments):
    """Starts a program and leaves it alone; the prefix's end is its end too."""
    return subprocess.Popen(["wine", str(program), *arguments], env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
