"""A Windows desk under Wine, for scripts: the registry, the user's hand, wrenlow.exe, and the stand-in for the AIM client.

Everything runs in the prefix and on the display of the environment (tools/wine.sh makes them).
"""
import asyncio
import os
import re
import shutil
import signal
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

from .client import Client
from .program import PATIENCE, end_wine, listens, of_windows, wine_state
from .record import within
from .wire import WireFault

SETTINGS = r"HKCU\software\Wrenlow"
PROXY = r"HKCU\software\America Online\AOL Instant Messenger (TM)\CurrentVersion\Proxy"
SCREEN_NAME = "Sue Sample"
OK, CANCEL = 1, 2
TIME_TO_CLOSE = 5  # seconds


async def until(condition, what):
    """Waits for the condition, a function or a coroutine function; gives its value when it is true. `what` is
    waited for, as a text or a function that gives one."""
    deadline = time.monotonic() + PATIENCE
    while True:
        value = condition()
        if asyncio.iscoroutine(value):
            value = await value
        if value:
            return value
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {PATIENCE} s in vain for {what() if callable(what) else what}")
        await asyncio.sleep(0.02)


def _start(*command, **streams):
    # In a session of its own and with no stream from the terminal, from which Wine would make a console: Ctrl-C is for
    # the script, which closes everything in order.
    streams = dict.fromkeys(("stdin", "stdout", "stderr"), asyncio.subprocess.DEVNULL) | streams
    return asyncio.create_subprocess_exec("wine", *map(str, command), start_new_session=True, **streams)


async def _wine(*command):
    """Runs a Windows program to its end; gives its status and output."""
    process = await _start(*command, stdout=asyncio.subprocess.PIPE)
    try:
        output, _ = await within(process.communicate(), f"the end of {command}", PATIENCE)
    except BaseException:
        await _kill(process)
        raise
    return process.returncode, output.decode(errors="replace")


async def _kill(process):
    if process.returncode is None:
        process.kill()
    await within(process.wait(), f"the end of process {process.pid}", PATIENCE)


async def registry_values(key):
    """The values of a key as {name: (type, text)}."""
    _, output = await _wine(of_windows("reg"), "query", key)
    return {name: (kind, text) for name, kind, text in re.findall(r"^    (\S+)    (REG_\w+)    (.*?)\r?$", output, re.MULTILINE)}


async def registry_set(key, **values):
    """A text is stored as one, a number as a double word. Once in thousands of times Wine does not start a program at all,
    without a word; so it may fail once."""
    for name, value in values.items():
        kind = "REG_DWORD" if isinstance(value, int) else "REG_SZ"
        for _ in range(2):
            status, output = await _wine(of_windows("reg"), "add", key, "/v", name, "/t", kind, "/d", str(value), "/f")
            if not status:
                break
        else:
            raise RuntimeError(f"cannot set {name}: status {status}, {output!r}")


async def registry_forget(key):
    await _wine(of_windows("reg"), "delete", key, "/f")  # which may not be there


@dataclass
class Box:
    title: str
    text: str
    buttons: list


class Hand:
    """The user's hand (sandbox/hand/), which stays on the desk."""

    def __init__(self, process):
        self._process = process

    @classmethod
    async def reach_out(cls, program):
        return cls(await _start(program, stdin=asyncio.subprocess.PIPE, stdout=asyncio.subprocess.PIPE))

    async def ask(self, command):
        self._process.stdin.write(command.encode() + b"\n")
        try:
            answer = await within(self._process.stdout.readline(), f"the hand's answer to {command!r}", PATIENCE)
        except TimeoutError:
            await _kill(self._process)  # a late answer would be taken for that to the next command
            raise
        if not answer:
            raise RuntimeError("the hand is gone")
        return answer.decode().strip("\r\n")

    async def do(self, command, expected):
        answer = await self.ask(command)
        if answer != expected:
            raise RuntimeError(f"{command!r}: {answer}")

    async def boxes(self):
        fields = (await self.ask("boxes")).split("\t")
        return [Box(title, text, [int(digit) for digit in buttons]) for title, text, buttons in zip(*[iter(fields)] * 3)]

    async def next_box(self):
        """Waits until exactly one box is open."""
        boxes = []

        async def one():
            boxes[:] = await self.boxes()
            return len(boxes) == 1
        await until(one, lambda: f"one box; there are {boxes}")
        return boxes[0]

    async def press(self, button):
        await self.do(f"press {button}", "pressed")

    async def windows(self):
        """The titles of the visible windows; a minimized one has "_" before it."""
        return (await self.ask("windows")).split("\t")

    async def rest(self):
        self._process.stdin.close()
        try:
            await within(self._process.wait(), "the hand to rest", PATIENCE)
        finally:
            await _kill(self._process)


class Wrenlow:
    PORT = 11080

    def __init__(self, program):
        self._program, self._process = program, None
        self._output = tempfile.TemporaryFile()

    async def start(self, checks_for_update=False):
        """Does not wait for anything: boxes may want an answer first."""
        # Of Wine the errors are wanted: who ends at the start has nothing else to say.
        environment = os.environ | {"WINEDEBUG": "fixme-all"}
        self._process = await _start(self._program, *([] if checks_for_update else ["d"]), env=environment,
                                     stdout=self._output, stderr=self._output)

    async def wait_until_listening(self):
        await until(lambda: self.has_ended() or listens(self.PORT), "the listener")
        if self.has_ended():
            raise RuntimeError(f"ended at its start: {self.state()}")

    def state(self):
        """What can be told when it has ended: how, its output, and what it stood on."""
        if not self.has_ended():
            return "wrenlow.exe has not been started" if self._process is None else f"wrenlow.exe runs as process {self.pid}"
        self._output.seek(0)
        output = self._output.read().decode(errors="replace").splitlines()
        return "\n".join([f"wrenlow.exe has ended with status {self._process.returncode}, having written:", *output, *wine_state()])

    @property
    def pid(self):
        """None when it does not run."""
        return self._process.pid if self._process and not self.has_ended() else None

    def has_ended(self):
        return self._process is not None and self._process.returncode is not None

    async def end(self):
        """Waits for the end; gives the exit status."""
        return await within(self._process.wait(), "wrenlow.exe to end", PATIENCE)

    async def ask_to_end(self):
        """As a shut-down of the desktop's programs does; returns before the program has ended."""
        await _wine(of_windows("taskkill"), "/im", "wrenlow.exe")

    async def close(self):
        """Ends it, asked or killed, and frees its port, whatever was the matter."""
        if self._process and not self.has_ended():
            await self.ask_to_end()
            try:
                await within(self._process.wait(), "wrenlow.exe to close", TIME_TO_CLOSE)
            except TimeoutError:
                await _kill(self._process)  # it has a question, or hangs
        if listens(self.PORT):
            end_wine()
        await until(lambda: not listens(self.PORT), "its port to be free")


class AimClient:
    """A copy of aim.exe in a folder of its own, with what it is told (aim.ini). It says how it connects and when it ends
    (aim.log); its conversation with the service is held here, by the client that all of the sandbox shares."""

    def __init__(self, program, folder, service):
        self.folder = Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self._file = self.folder / "aim.log"
        self._file.unlink(missing_ok=True)
        shutil.copy(program, self.folder / "aim.exe")
        (self.folder / "aim.ini").write_text(f"[aim]\nName={SCREEN_NAME}\n", encoding="ascii")
        self._service = service.host, service.port
        self._process = self._attendance = self._client = None
        self._log = []   # (process, text): its own lines, and what has become of its conversation
        self._taken = 0  # lines of its file that are in there
        self._read = 0   # lines that a test has waited for

    @property
    def bag(self):
        """The cached user information of the screen name."""
        home = Path(os.environ["WINEPREFIX"], "drive_c/users", os.environ.get("USER", "root"))
        return home / "AppData/Roaming/Aim" / SCREEN_NAME.lower().replace(" ", "") / "userinfo.bag"

    async def start(self):
        self._process = await _start(self.folder / "aim.exe")
        if self._attendance is None:
            self._attendance = asyncio.create_task(self._attend())

    def freeze(self):
        """Its windows do not answer until it thaws."""
        os.kill(self._process.pid, signal.SIGSTOP)

    def thaw(self):
        os.kill(self._process.pid, signal.SIGCONT)

    async def close(self, hand):
        """Closes it, whichever process it is now; does nothing if there is none."""
        try:
            answer = await hand.ask(f"close {SCREEN_NAME}'s Buddy List Window")
        except (RuntimeError, TimeoutError):
            answer = "the hand is gone"
        if answer not in ("closed", "no such window"):
            await _wine(of_windows("taskkill"), "/f", "/im", "aim.exe")
        if self._client:
            await self._client.close()

    async def was_ended(self):
        """Waits until the process that we have started has ended; gives its status."""
        return await within(self._process.wait(), "the AIM client to end", PATIENCE)

    def log(self):
        """What it has done, as (process, text)."""
        return self._log

    async def does(self, text):
        """Waits for the next such line of the log; gives the process that wrote it. Lines before it are passed over."""
        def find():
            for number, (process, line) in enumerate(self._log[self._read:], self._read + 1):
                if line == text:
                    self._read = number
                    return process
            return None
        return await until(find, lambda: f"{text!r} of the AIM client, which has done {self._log}")

    async def signs_on(self, way):
        """Waits until it has started, and has signed on this way; gives the process."""
        process = await self.does("has started")
        for line in (f"signs on {way}", f"is signed on as {SCREEN_NAME}"):
            if await self.does(line) != process:
                raise AssertionError(f"two AIM clients: {self._log}")
        return process

    async def _attend(self):
        """Signs on for each process that says it does."""
        while True:
            for line in self._file.read_text(encoding="ascii").splitlines()[self._taken:] if self._file.exists() else []:
                self._taken += 1
                process, text = line.split(" ", 1)
                self._log.append((process, text))
                if text.startswith("signs on "):
                    await self._sign_on(process, text.split()[-1])
            await asyncio.sleep(0.02)

    async def _sign_on(self, process, way):
        host, _, port = way.partition(":")
        if self._client:
            await self._client.close()
        client = self._client = Client(SCREEN_NAME, self._service, (host, int(port)) if port else None)
        try:
            await client.sign_on(services=())
        except (OSError, EOFError, LookupError, WireFault) as error:
            return self._log.append((process, f"cannot sign on: {error!r}"))
        self._log.append((process, f"is signed on as {client.name}"))
        client.bos.when_ended(lambda: self._log.append((process, "has lost its connection")))
