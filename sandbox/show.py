"""What ./run shows: two clients sign on through the proxy, chat, and every frame stands in a readable line. One of them
knows the other by an alias, their messages are logged, a profile comes with its source, and an away message is set.

Afterwards one of them stays and answers whoever writes to it, so that a real AIM client has company.
"""
import asyncio
import os
import shutil
import sys

from .client import Client
from .desk_show import DeskShow
from .program import write_aliases
from .service import Service
from .wire import parse_tlvs

AIM_PORT = 5190  # where AIM clients look for the authorisation server
CONVERSATION = [
    (0, "Hi Tom, can you read this?"),
    (1, "Loud and clear. What is between us?"),
    (0, "A relay: it takes every frame of ours apart and numbers it anew."),
    (1, "<b>And</b> nothing got lost: naïve café ✓"),
]


ALIAS = "Uncle Tom"
PROFILE = "<html><body>I am only a <i>sample</i>.</body></html>"
AWAY = "Gone to the sea"


class Show:
    """`settings` are the program's (see sandbox.program), `data` its data folder, and `commands`, if it takes any, where
    to write them."""

    def __init__(self, proxy, settings, data, commands=None, write=print):
        self.proxy, self._settings, self.data, self._commands = proxy, settings, os.path.abspath(data), commands
        self._logs = os.path.join(self.data, "logs")
        self._write = write
        self.service = Service(on_event=self._frame)
        self._frames = 0
        self.watching = False  # frames are shown and counted

    async def start_service(self):
        try:
            await self.service.start(AIM_PORT)
        except OSError:
            await self.service.start()  # somebody else's; any port will do
        self.say(f"The sandbox service listens on {self.service.host}:{self.service.port}")

    async def play(self):
        """Runs the scene; gives the client that stays. Raises when a frame or a message was not as it must be."""
        self._write("\n== Two sample clients")
        self.say("A line per frame: whose connection, which, the direction, the number at the service, what it is")
        try:
            return await self._scene()
        finally:
            write_aliases(self.data, None)
            for name in ("logims", "seehtml"):
                self._settings.set(name, "0")

    async def _scene(self):
        address = self.service.host, self.service.port
        ada, tom = (Client(name, address, self.proxy) for name in ("Ada Sample", "tomsample"))
        await self._sign_on(tom, ada.name)
        self.say(f'repl.dat is written: from now on, whoever signs on sees {tom.name} as "{ALIAS}"')
        write_aliases(self.data, f"{tom.name}\r\n{ALIAS}\r\n".encode())
        await self._sign_on(ada, ALIAS)
        await ada.sees(ALIAS)
        await self._converse(ada, tom)
        await self._show_profile(ada, tom)
        await self._show_away_message(ada, tom)
        await ada.sign_off()
        if self.service.faults:
            raise AssertionError(f"the service saw broken frames: {[fault.text for fault in self.service.faults]}")
        self.say(f"Ada Sample has signed off. {self._frames} frames were relayed, none broken.")
        return tom

    async def _sign_on(self, client, buddy):
        self.say(f"{client.name} signs on through {self.proxy[0]}:{self.proxy[1]}")
        await client.sign_on(buddies=[buddy])
        self.say(f"{client.name} is signed on, with {2 + len(client.services)} connections in all")

    async def _converse(self, ada, tom):
        """Logged: by Ada's connection under the alias and by Tom's under her name."""
        shutil.rmtree(self._logs, ignore_errors=True)
        for name, value in (("logfolder", "0"), ("loghowhtm", "False"), ("logwhere", self._settings.path(self._logs)),
                            ("logims", "1")):
            self._settings.set(name, value)
        for speaker, text in CONVERSATION:
            sender, receiver = (ada, tom) if speaker == 0 else (tom, ada)
            called, heard_as = (ALIAS, ada.name) if speaker == 0 else (ada.name, ALIAS)
            await sender.say(called, text)
            self._expect((heard_as, text), await receiver.hear())
            self.say(f"{heard_as}: {text}")
        for name in sorted(os.listdir(self._logs)):
            self.say(f"logs/{name}:")
            with open(os.path.join(self._logs, name), encoding="utf-8", errors="replace") as file:
                for line in file:
                    self._write("    " + line.rstrip())

    async def _show_profile(self, ada, tom):
        await tom.set_profile(PROFILE)
        await self.service.received(tom.name, 2, 4)
        self._expect(PROFILE, await ada.profile_of(ALIAS))
        self._settings.set("seehtml", "1")
        profile = await ada.profile_of(ALIAS)
        self.say(f"{ALIAS}'s profile with its source, as Ada Sample sees it: {profile}")
        if not profile.startswith(PROFILE) or not profile.endswith(PROFILE.replace("<", "&lt;")):
            raise AssertionError("the source of the profile is not shown")

    async def _show_away_message(self, ada, tom):
        """Typed, not sent by the client: its connection gets a frame of the program's own."""
        if not self._commands:
            return self.say("wrenlow.exe sets away messages by its tray menu; ./run --relay shows the frames")
        for command, text in ((f"away {tom.name} {AWAY}", AWAY), (f"back {tom.name}", "")):
            self.say(f"Typed: {command}")
            with open(self._commands, "w", encoding="utf-8") as commands:
                print(command, file=commands)
            await self.service.events.find(lambda event: event.kind == "received" and event.frame.snac == (2, 4)
                                           and parse_tlvs(event.frame.data).get(4) == text.encode())
            self._expect(text, await ada.away_message_of(ALIAS))
            self.say(f'Ada Sample sees that {ALIAS} is {"away: " + text if text else "back"}')

    @staticmethod
    def _expect(expected, seen):
        if seen != expected:
            raise AssertionError(f"{seen!r} instead of {expected!r}")

    async def keep_company(self, host):
        """Answers every IM until cancelled."""
        while True:
            sender, text = await host.hear(patience=None)
            self.say(f"{sender}: {text}")
            await host.say(sender, f"You said: {text}")

    def _frame(self, event):
        if not self.watching:
            return
        if event.frame:
            self._frames += 1
            arrow = "-->" if event.kind == "received" else "<--"
            name = event.name or "(new)"
            self._write(f"    {name:<11}{event.connection:<11} {arrow} service  #{event.frame.seq:<5} {event.text}")
        elif event.kind == "fault":
            self._write(f"    {event.name} {event.connection}: {event.text}")

    def say(self, text):
        self._write(f"* {text}")


async def run(show, once, build=None):
    """With the `build` tree of the Windows programs, wrenlow.exe is started here, in its data folder; otherwise the
    proxy runs already."""
    sys.stdout.reconfigure(line_buffering=True)
    await show.start_service()
    desk = DeskShow(build, show.data, show.service, show.say) if build else None
    if desk:
        await desk.begin()
    try:
        show.watching = True
        await _play(show, once)
    finally:
        show.watching = False
        if desk:
            await desk.end()
    await show.service.stop()


async def _play(show, once):
    host = await show.play()
    if once:
        return await host.sign_off()
    print(f"""
To try your own AIM client (5.x; 6.2 and later speak TLS, which nobody can relay):
  connection: host 127.0.0.1, port {show.service.port}; any screen name, any password
  proxy:      SOCKS4, host {show.proxy[0]}, port {show.proxy[1]}
Then write to {host.name}, who answers. Ctrl-C ends everything.""")
    await show.keep_company(host)
