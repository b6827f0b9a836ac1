"""The programs that tests.soak runs, behind one face: started with settings, commanded, looked into, ended."""
import asyncio
import itertools

from sandbox.desk import Hand, until
from tests.e2e.measure import held_by
from tests.e2e.target import Exe, Relay


class Soaked:
    FIRST_ROUNDS = 1  # until every command has been given once

    def __init__(self, target):
        self._target = target
        self.data, self.path = target.data, target.settings.path
        self._program = None

    @property
    def address(self):
        return self._program.address

    async def start(self, settings):
        for name, value in settings.items():
            self._target.settings.set(name, value)
        self._program = self._target.start()
        self._program.wait_until_listening()
        self._program.accompany()

    async def ask_bystander(self):
        """How many messages it has told of, and how many seconds one took at most."""
        longest = await asyncio.to_thread(self._program.bystander.how_it_goes)
        return self._program.bystander.told, longest

    async def check(self):
        """It runs and has reported nothing."""
        if not self._program.alive() or self._program.reports():
            raise AssertionError("the program has ended, or reported something")

    def state(self):
        return self._program.state() if self._program else "the program was not started"

    async def held(self):
        held = held_by(self._program.pid)
        return {"KiB": held.memory, "files": held.files, "threads": held.threads}

    async def close(self, settings):
        if self._program:
            self._program.kill()
        for name in settings:
            self._target.settings.set(name, "0")
        self._target.close()


class SoakedRelay(Soaked):
    COMMANDS = ("away (all) gone <i>fishing</i>", "back (all)", "idle bystanderada 5", "profile bystandertom " + "p" * 900,
                "names", "away nobody x", "what?")

    def __init__(self, path):
        super().__init__(Relay(path))

    async def command(self, random):
        for _ in range(5):
            await asyncio.sleep(0.05)
            self._program.say(random.choice(self.COMMANDS))


class SoakedExe(Soaked):
    # A dialog: its place in the tray menu as keys, title, what is typed, the button that is pushed.
    DIALOGS = (("DDDDRE", "Set Away Message", "gone <i>fishing</i>", "Away!"), ("DDDDRDE", "Remove Away Message", None, "Back!"),
               ("DDDDDRE", "Set Idle Time", "5", "Idle"), ("DDDDDRDE", "Unidle", None, "Back!"),
               ("DDDE", "Edit Profile", "p" * 300, "Save"), ("DDDE", "Edit Profile", "nothing", "Cancel"))
    FIRST_ROUNDS = 4 * len(DIALOGS)  # GDI objects come in threes at first, to 197, and stay there for 200 rounds

    def __init__(self, path):
        super().__init__(Exe(path))
        self._hand, self._next = None, itertools.cycle(self.DIALOGS)

    async def start(self, settings):
        await super().start(settings)
        self._hand = await Hand.reach_out(self._target.hand)

    async def command(self, _random):
        keys, title, text, button = next(self._next)
        await self._hand.do(f"menu {keys}", "chosen")

        async def shown():
            return title in await self._hand.windows()
        await until(shown, title)
        if text:
            await self._hand.do(f"fill {title}\t0\t{text}", "filled")
        await self._hand.do(f"push {title}\t{button}", "closed")

    async def check(self):
        await super().check()
        windows = await self._hand.windows()
        if "Wrenlow" in windows or await self._hand.boxes():
            raise AssertionError(f"something was reported: {windows}")

    async def held(self):
        words = (await self._hand.ask("holdings")).split()
        held = await super().held()
        del held["files"]  # the ones of Wine, which come and go
        return held | {what: int(count) for what, count in zip(words[::2], words[1::2])}

    async def close(self, settings):
        if self._hand:
            await self._hand.rest()
        await super().close(settings)


PROGRAMS = {"relay": SoakedRelay, "exe": SoakedExe}
