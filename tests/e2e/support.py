"""What the tests stand on: a service, clients through the program under test, and a conversation nothing may disturb."""
import asyncio
import fcntl
import os
import re
import struct
import tempfile
import termios
import time
import unittest

from sandbox.client import Client, socks4_request
from sandbox.program import write_aliases
from sandbox.record import PATIENCE
from sandbox.service import Service
from sandbox.wire import HELLO, SIGN_ON

program = None  # the Program under test, set by the runner
target = None   # its Relay or Exe


class RelayTest(unittest.IsolatedAsyncioTestCase):
    """A service and any number of clients. In the end the program lives and nobody has seen a broken frame, except the
    clients that a test marks as its victims."""

    async def asyncSetUp(self):
        self.service = await self.new_service()
        self._clients = []

    async def asyncTearDown(self):
        for client in self._clients:
            await client.close()
        self.assertTrue(program.alive(), "the program has ended:\n" + program.output())

    async def new_service(self, **options):
        """A service whose frames every test needs whole; options as for Service."""
        service = Service(**options)
        await service.start()
        self.addAsyncCleanup(service.stop)
        self.addCleanup(lambda: self.assertEqual([fault.text for fault in service.faults], []))
        return service

    def client(self, name, service=None, victim=False, **options):
        """A client of the service; a victim's connections may break."""
        service = service or self.service
        client = Client(name, (service.host, service.port), program.address, **options)
        self._clients.append(client)
        if not victim:
            self.addCleanup(lambda: self.assertEqual(client.faults, []))
        return client

    async def open(self):
        """A bare connection to the program, before any request."""
        reader, writer = await asyncio.open_connection(*program.address)
        self.addCleanup(writer.close)
        return reader, writer

    async def open_to(self, port, host="127.0.0.1"):
        """A bare connection through the program to host:port."""
        reader, writer = await self.open()
        writer.write(socks4_request(host, port))
        await within(reader.readexactly(8))
        return reader, writer

    async def bare_server(self):
        """A listener without manners: gives its port and a function that waits for the next (reader, writer)."""
        arrivals = asyncio.Queue()
        server = await asyncio.start_server(lambda reader, writer: arrivals.put_nowait((reader, writer)), "127.0.0.1", 0)
        self.addCleanup(server.close)
        return server.sockets[0].getsockname()[1], lambda: within(arrivals.get())

    async def pair(self):
        """Both ends of a connection through the program, greetings exchanged: client's and server's (reader, writer)."""
        port, next_arrival = await self.bare_server()
        client = await self.open_to(port)
        server = await next_arrival()
        client[1].write(frame(SIGN_ON, 1, HELLO))
        await within(server[0].readexactly(10))
        server[1].write(frame(SIGN_ON, 100, HELLO))
        await within(client[0].readexactly(10))
        return client, server


class FeatureTest(RelayTest):
    """With settings, an alias list and folders for logs, all gone again when the test ends."""
    OFF = {"logims": "0", "seehtml": "0"}

    async def asyncSetUp(self):
        await super().asyncSetUp()
        self._reported = len(program.reports())
        self.addCleanup(self.aliases, None)

    def settings(self, **values):
        for name, value in values.items():
            target.settings.set(name, value)
            if value != self.OFF.get(name, value):
                self.addCleanup(target.settings.set, name, self.OFF[name])

    def log_to(self, folder=None, logfolder="0", loghowhtm="False"):
        """Switches logging on; gives the folder."""
        folder = folder or self.folder()
        self.settings(logfolder=logfolder, loghowhtm=loghowhtm, logwhere=target.settings.path(folder), logims="1")
        return folder

    def aliases(self, data):
        """Writes the list that new connections will read; None: there is none."""
        write_aliases(target.data, data)

    def folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return folder.name

    def logs(self, folder):
        """What all logs below the folder hold, by path; dates in names and times in lines are masked."""
        found = {}
        for path, _, names in os.walk(folder):
            for name in names:
                with open(os.path.join(path, name), "rb") as file:
                    data = file.read()
                key = os.path.relpath(os.path.join(path, re.sub(r" \d{4}-\d\d-\d\d\.", " DATE.", name)), folder)
                found[key] = re.sub(rb"\(\d\d:\d\d:\d\d\)", b"(TIME)", data)
        return found

    def expect_reports(self, count):
        """That so many errors were reported since the last look. Wrenlow.exe shows them in windows, not counted here."""
        reports = program.reports()
        if target.name == "relay":
            self.assertEqual(len(reports) - self._reported, count, "\n".join(reports[self._reported:]))
        self._reported = len(reports)


def frame(channel, seq, payload=b""):
    return struct.pack(">BBHH", 0x2A, channel, seq & 0xFFFF, len(payload)) + payload


async def within(awaitable):
    return await asyncio.wait_for(awaitable, PATIENCE)


def waiting_in_the_kernel(connection):
    """Bytes sent on this connection that have not been read by its other end, which is on this machine."""
    unsent = struct.unpack("i", fcntl.ioctl(connection, termios.TIOCOUTQ, b"\0\0\0\0"))[0]
    other_end = f":{connection.getpeername()[1]:04X} 0100007F:{connection.getsockname()[1]:04X} "
    with open("/proc/net/tcp", encoding="ascii") as table:
        entry = next(line.split() for line in table if other_end in line)
    return unsent + int(entry[4].split(":")[1], 16)  # "transmit queue:receive queue"


class Bystanders:
    """Two clients that talk without a pause while `async with` lasts, and must not notice anything.

    How long a message took at most is only told: it holds what the test itself and the machine did meanwhile.
    """
    told, longest, longest_in = 0, 0.0, ""

    def __init__(self, test):
        self._test = test.id().rsplit(".", 1)[1]
        self._ada, self._tom = test.client("Ada Bystander"), test.client("tombystander")
        self._count = 0

    async def __aenter__(self):
        await self._ada.sign_on()
        await self._tom.sign_on()
        await self._exchange()
        self._talking = asyncio.create_task(self._talk())

    async def __aexit__(self, error, *_):
        so_far = self._count
        while not error and self._count < so_far + 2 and not self._talking.done():
            await asyncio.sleep(0.01)  # at least one whole exchange has begun after the disturbance
        self._stop = True
        await within(self._talking)

    async def _talk(self):
        self._stop = False
        while not self._stop:
            await self._exchange()

    async def _exchange(self):
        for speaker, listener in ((self._ada, self._tom), (self._tom, self._ada)):
            text = f"message {self._count}"
            begin = time.monotonic()
            await speaker.say(listener.name, text)
            heard = await listener.hear()
            self._note(time.monotonic() - begin)
            if heard != (speaker.name, text):
                raise AssertionError(f"{listener.name} heard {heard} instead of {text!r}")
            self._count += 1

    def _note(self, seconds):
        Bystanders.told += 1
        if seconds > Bystanders.longest:
            Bystanders.longest, Bystanders.longest_in = seconds, self._test
