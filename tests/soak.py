"""python3 -m tests.soak relay|exe PATH [--seconds N]: mixed sessions on a program for as long as wanted.

Round after round, users sign on with aliases and logs, talk, are given away messages, idle times and profiles by
commands or dialogs, and sign off or break off; strangers send garbage. Two bystanders talk all the time, and two more
in a process of their own, which takes the time. In the end memory, threads and whatever else is held are what they
were after the first rounds, nobody has seen a broken frame, no error was reported, and every message of the
bystanders stands in the log. Not for a program under a sanitizer, whose memory tells nothing. wrenlow.exe needs a
desk: tools/in-wine DIRECTORY python3 -m tests.soak exe PATH.
"""
import argparse
import asyncio
import glob
import logging
import random
import sys
import tempfile
import time

from sandbox.client import Client, socks4_request
from sandbox.program import write_aliases
from sandbox.record import within
from sandbox.service import Service
from tests.e2e.measure import sockets
from tests.e2e.target import free_port, wait_until
from tests.soak_programs import PROGRAMS

WARM_UP = 0.25             # of the time: caches, logs and tables reach their size
USERS = 6
LINES = 4                  # connections of one session: authorisation, BOS, two services
CONNECTION_COST = 0.5      # KiB that a closed connection may leave in the table (its slot and two names)
MEMORY_TOLERANCE = 1_500   # KiB; heaps breathe, ...
PATIENCE = 4               # times as long it runs when something has grown by more than this
TOLERANCE = 3              # ... and so does everything else; what leaks does so by the hundred
SETTINGS = {"logims": "1", "logfolder": "1", "seehtml": "1"}
ALIASES = b"".join(b"bud%d\r\nBuddy %d\r\n" % (number, number) for number in range(USERS))


class Soak:
    def __init__(self, program, seconds, seed):
        self.program, self.seconds, self.random = program, seconds, random.Random(seed)
        self.messages = self.sessions = self.strangers = 0
        self.folder = tempfile.TemporaryDirectory()

    async def run(self):
        self.service = Service()
        await self.service.start()
        try:
            write_aliases(self.program.data, ALIASES)
            await self.program.start(SETTINGS | {"logwhere": self.program.path(self.folder.name)})
            await self._run_rounds()
        except BaseException:
            print(self.program.state())
            raise
        finally:
            await self.service.stop()
            await self.program.close(SETTINGS)
            self.folder.cleanup()

    async def _run_rounds(self):
        self._stop = False
        await self._begin_bystanders()
        talking = asyncio.create_task(self._talk())
        begin, warm, rounds = time.monotonic(), None, 0
        seconds = self.seconds
        while rounds < self.program.FIRST_ROUNDS + 2 or time.monotonic() - begin < seconds:
            await self._round()
            rounds += 1
            held = await self._quiet()
            # A heap grows in steps of a megabyte or two, a leak with every connection: the longer, the plainer.
            if warm and time.monotonic() - begin >= seconds and self._growth(warm, held, warm_connections):
                seconds = self.seconds * PATIENCE
            if not warm and rounds > self.program.FIRST_ROUNDS and time.monotonic() - begin >= self.seconds * WARM_UP:
                warm, warm_connections = held, self._connections()
        told, longest = await self.program.ask_bystander()
        print(f"{rounds} rounds, {self.sessions} sessions, {self._connections()} connections, {self.strangers} strangers, "
              f"{self.messages + told} messages of the bystanders; of {told} the longest took {longest * 1000:.0f} ms")
        print(f"after the warm-up: {warm}\nat the end:        {held}")
        self._stop = True
        await talking
        await self._end_bystanders()
        await self._judge(warm, held, warm_connections)

    def _connections(self):
        return LINES * self.sessions + self.strangers

    async def _round(self):
        async with asyncio.TaskGroup() as group:
            for number in range(USERS):
                group.create_task(self._session(number))
            group.create_task(self.program.command(self.random))
            for _ in range(10):
                group.create_task(self._stranger())

    async def _session(self, number):
        """A user and a buddy who has an alias and is signed on elsewhere, without the relay."""
        await asyncio.sleep(self.random.random() / 5)
        client, buddy = self._client(f"user{number}"), self._client(f"bud{number}", via=None)
        await buddy.sign_on(services=())
        await client.sign_on(buddies=[f"Buddy {number}"])
        await buddy.set_profile("a <i>profile</i>")
        for count in range(self.random.randrange(1, 8)):
            text = f"message {count} <b>for</b> you" * self.random.choice((1, 1, 60))
            await client.say(f"Buddy {number}", text)
            await expect_heard(buddy, client.name, text)
            await buddy.say(client.name, text)
            await expect_heard(client, f"Buddy {number}", text)
        expect("&lt;i>" in await client.profile_of(f"Buddy {number}"), "the source of the profile is not shown")
        await client.keep_alive()
        await buddy.sign_off()
        if self.random.random() < 0.3:
            client.bos.stream.reset()
            await client.close()
        else:
            await client.sign_off()
            expect(not client.faults, f"user{number}: {client.faults}")
        self.sessions += 1

    async def _stranger(self):
        """Somebody who wants no relay. Never eight bytes: these would be an address to connect to."""
        self.strangers += 1
        reader, writer = await within(asyncio.open_connection(*self.program.address), "a connection to the program")
        request = self.random.choice((b"", b"\x04", b"GET /", b"\x16\x03\x01", b"\x04\x01" + b"\0\0\0\0\0\1" + b"x" * 600,
                                      socks4_request("127.0.0.1", free_port())))
        writer.write(request)
        if self.random.random() < 0.5:
            writer.transport.abort()
            return
        writer.write_eof()
        try:
            await within(reader.read(), "the end of a stranger's connection")
        except ConnectionError:
            pass
        writer.close()

    async def _quiet(self):
        """What is held when all but the bystanders have gone; the service forgets what it has seen."""
        faults = [event.text for event in self.service.faults if "broken" not in event.text]
        expect(not faults, f"the service saw {faults}")
        self.service.events.items.clear()
        await asyncio.to_thread(wait_until, lambda: self._open() <= self.sockets, "connections stay open")
        await self.program.check()
        return await self.program.held()

    def _open(self):
        """How many sockets the program has for connections, from clients and to the service."""
        return sum(end.inode and end.peer_port and (end.port == self.program.address[1] or end.peer_port == self.service.port)
                   for end in sockets())

    async def _begin_bystanders(self):
        self.ada, self.tom = self._client("Bystander Ada"), self._client("Bystander Tom")
        await self.ada.sign_on()
        await self.tom.sign_on()
        self.sockets = self._open()

    async def _end_bystanders(self):
        for client in (self.ada, self.tom):
            await client.sign_off()
            expect(not client.faults, f"{client.name}: {client.faults}")

    async def _talk(self):
        while not self._stop:
            for speaker, listener in ((self.ada, self.tom), (self.tom, self.ada)):
                text = f"undisturbed {self.messages}"
                await speaker.say(listener.name, text)
                await expect_heard(listener, speaker.name, text)
                self.messages += 1
            await asyncio.sleep(0.005)

    def _client(self, name, **options):
        return Client(name, (self.service.host, self.service.port), **{"via": self.program.address, **options})

    def _growth(self, warm, held, warm_connections):
        """What has grown by more than it may since the warm-up; "" for nothing."""
        memory = MEMORY_TOLERANCE + (self._connections() - warm_connections) * CONNECTION_COST
        return ", ".join(f"{what}: {count}, after the warm-up {warm[what]}" for what, count in held.items()
                         if count > warm[what] + (memory if what == "KiB" else TOLERANCE))

    async def _judge(self, warm, held, warm_connections):
        grown = self._growth(warm, held, warm_connections)
        expect(not grown, grown)
        await self.program.check()
        # Each message is logged when it goes out and when it comes in.
        logged = 0
        for path in glob.glob(f"{self.folder.name}/*ystander*om*/*") + glob.glob(f"{self.folder.name}/*ystander*da*/*"):
            with open(path, "rb") as file:
                logged += file.read().count(b"undisturbed ")
        expect(logged == 2 * self.messages, f"{logged} lines in the log instead of {2 * self.messages}")


def expect(holds, otherwise):
    if not holds:
        raise AssertionError(otherwise)


async def expect_heard(listener, speaker, text):
    heard = await listener.hear()
    expect(heard == (speaker, text), f"{listener.name} heard {heard} instead of {text!r} from {speaker}")


def main():
    parser = argparse.ArgumentParser(prog="python3 -m tests.soak", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("target", choices=PROGRAMS)
    parser.add_argument("path")
    parser.add_argument("--seconds", type=float, default=30)
    parser.add_argument("--seed", type=int, default=2017)
    arguments = parser.parse_args()
    logging.getLogger("asyncio").setLevel(logging.CRITICAL)
    program = PROGRAMS[arguments.target](arguments.path)
    asyncio.run(Soak(program, arguments.seconds, arguments.seed).run())
    print("flat, whole and undisturbed")


if __name__ == "__main__":
    sys.exit(main())
