"""What the tests stand on: the program under test with a conversation through it that nothing may disturb, a service, and
clients."""
import asyncio
import fcntl
import os
import re
import socket
import struct
import termios

from sandbox.client import Client, socks4_request
from sandbox.program import write_aliases
from sandbox.record import within
from sandbox.service import Service
from sandbox.wire import HELLO, SIGN_ON
from tests.e2e.measure import sockets
from tests.report import BoundedTest

target = None   # the Relay or the Exe under test, set by the runner
program = None  # its Program that all tests share, from the first one that needs it


def start(**options):
    """A program that listens, with a bystander."""
    started = target.start(**options)
    try:
        started.wait_until_listening()
        started.accompany()
    except BaseException:
        started.kill()
        raise
    return started


class Bystanders:
    """What those of all tests have told. The times decide nothing: the machine may do something else, too."""
    messages, longest, longest_in = 0, 0.0, ""

    @classmethod
    def ask(cls, bystander, test):
        told = bystander.told
        seconds = bystander.how_it_goes()
        cls.messages += bystander.told - told
        if seconds > cls.longest:
            cls.longest, cls.longest_in = seconds, test.id().rsplit(".", 1)[1]


class RelayTest(BoundedTest):
    """The program, a service and any number of clients. In the end the program lives, and nobody has seen a broken frame:
    not the bystander, and no client that the test has not marked as its victim."""

    async def asyncSetUp(self):
        global program
        if program is None or not program.alive():
            self.discard()
            program = start()
        self.service = await self.new_service()

    async def asyncTearDown(self):
        self.assertTrue(program.alive(), "the program has ended")
        await asyncio.to_thread(Bystanders.ask, program.bystander, self)

    def state(self):
        return program.state() if program else "there is no program"

    def discard(self):
        global program
        if program:
            program.kill()
            program = None
            target.renew()

    async def new_service(self, **options):
        """A service whose frames every test needs whole; options as for Service."""
        service = Service(**options)
        await service.start()
        self.addAsyncCleanup(service.stop)
        self.addCleanup(lambda: self.assertEqual([fault.text for fault in service.faults], []))
        return service

    def client(self, name, service=None, victim=False, through=None, **options):
        """A client of the service, through the shared program or another one; a victim's connections may break."""
        service = service or self.service
        client = Client(name, (service.host, service.port), (through or program).address, **options)
        if not victim:
            self.addCleanup(lambda: self.assertEqual(client.faults, []))
        self.addAsyncCleanup(client.close)
        return client

    async def open(self):
        """A bare connection to the program, before any request."""
        reader, writer = await within(asyncio.open_connection(*program.address), "a connection to the program")
        self.addCleanup(writer.close)
        return reader, writer

    async def open_to(self, port, host="127.0.0.1"):
        """A bare connection through the program to host:port."""
        reader, writer = await self.open()
        writer.write(socks4_request(host, port))
        await within(reader.readexactly(8), f"the SOCKS4 reply for {host}:{port}")
        return reader, writer

    async def bare_server(self):
        """A listener without manners: gives its port and a function that waits for the next (reader, writer)."""
        arrivals = asyncio.Queue()
        server = await asyncio.start_server(lambda reader, writer: arrivals.put_nowait((reader, writer)), "127.0.0.1", 0)
        self.addCleanup(server.close)
        return server.sockets[0].getsockname()[1], lambda: within(arrivals.get(), "a connection at the bare server")

    def silent_port(self, host, port=0):
        """Where calls are neither taken nor refused: the queue of those that wait to be taken is full."""
        silent = socket.create_server((host, port), backlog=0)
        self.addCleanup(silent.close)
        for _ in range(2):  # as many as Linux lets wait, and one
            waiting = socket.socket()
            self.addCleanup(waiting.close)
            waiting.setblocking(False)
            waiting.connect_ex(silent.getsockname())
        return silent.getsockname()[1]

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
    OFF = {"logims": "0", "logchat": "0", "seehtml": "0", "server": "", "server-fallback": "1"}

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


def waiting_in_the_kernel(connection):
    """Bytes sent on this connection that have not been read by its other end, which is on this machine."""
    unsent = struct.unpack("i", fcntl.ioctl(connection, termios.TIOCOUTQ, b"\0\0\0\0"))[0]
    here, there = connection.getsockname()[1], connection.getpeername()[1]
    return unsent + next(end.unread for end in sockets() if (end.port, end.peer_port) == (there, here))
