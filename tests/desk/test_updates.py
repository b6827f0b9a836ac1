"""Update checks of a wrenlow.exe whose update server (tests/win32/CMakeLists.txt) is played here, mostly by somebody who means
no good. A conversation goes on meanwhile."""
import asyncio
import itertools
import os
import socket
import struct
import tempfile

from sandbox.desk import OK, Box
from sandbox.record import within
from tests.desk.test_aim_client import Desk

SERVER = "127.0.0.1", 11081
REQUEST = b"GET %s HTTP/1.1\r\nHost: localhost\r\n\r\n"
CHECK, SETUP = b"/wrenlow/latest_version.php", b"/get/setup.exe"
GOOD = b"HTTP/1.1 200 OK\r\n"
UP_TO_DATE = GOOD + b"\r\nUpdate: 17 /a b\r\n"
FAILED = Box("Wrenlow", "The connection to the update server failed.", [OK])
NOTHING_NEW = Box("Wrenlow", "There are no new updates at this time.", [OK])

RESET = b""

# A reply as chunks that are sent one by one for as long as they are taken, and what the user is told of it.
REPLIES = {
    "garbage": ([os.urandom(100_000)], FAILED),
    "a head without end": (itertools.chain([GOOD], itertools.repeat(b"X: " + b"y" * 997 + b"\r\n")), FAILED),
    "a body without end": (itertools.chain([GOOD + b"\r\n"], itertools.repeat(b"Update : 18 /a b\r\n" * 50)), FAILED),
    "a chunk without end": (itertools.chain([GOOD + b"Transfer-Encoding: chunked\r\n\r\nffffffff\r\n"], itertools.repeat(b"0" * 900)),
                            FAILED),
    "a reset": ([GOOD, RESET], FAILED),
    "single bytes": ([bytes([byte]) for byte in UP_TO_DATE], NOTHING_NEW),
}


class Updates(Desk):
    PROGRAM = "tests/win32/asking/wrenlow.exe"

    async def check(self, chunks):
        """The program starts, and its check is answered so."""
        self.chunks, self.expected = chunks, CHECK
        self.ended = asyncio.Queue()
        server = await asyncio.start_server(self.answer, *SERVER)
        self.addCleanup(server.close)
        await self.start(setupaim="0", checks_for_update=True)
        await self.accompany()

    async def answer(self, reader, writer):
        connection = writer.get_extra_info("socket")
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        try:
            request = await within(reader.readuntil(b"\r\n\r\n"))
            self.assertEqual(request, REQUEST % self.expected)
            for chunk in self.chunks:
                if chunk == RESET:
                    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
                writer.write(chunk)
                await writer.drain()
                await asyncio.sleep(0)
        except ConnectionError:
            pass  # it has been given up
        writer.close()
        self.ended.put_nowait(reader)

    async def test_a_hostile_reply_is_given_up_and_disturbs_nobody(self):
        # Of the check at the start nobody is told.
        await self.check(itertools.chain(itertools.repeat(b"y", 2000), itertools.repeat(b"y" * 500)))
        await within(self.ended.get(), "the end of the check at the start")
        await self.hand.do("menu UUUUE", "chosen")
        await self.shows("Settings")
        for what, (self.chunks, told) in REPLIES.items():
            with self.subTest(what):
                await self.hand.do("push Settings\tCheck for updates now", "open")
                self.assertEqual(await self.hand.next_box(), told)
                await self.undisturbed()
                await self.hand.press(OK)
                await within(self.ended.get(), "the end of the connection")

    async def test_a_setup_file_of_many_megabytes_arrives_whole_where_the_user_wants_it(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        setup = os.urandom(16 << 20)
        await self.check([GOOD + b"\r\nUpdate: 18 %s C:\\a/../..\\wrenlow18.exe\r\n" % SETUP])
        await self.shows("Wrenlow Update")
        self.expected, self.chunks = SETUP, [GOOD + b"Content-Length: %d\r\n\r\n" % len(setup), setup]
        place = "Z:" + folder.name.replace("/", "\\") + "\\chosen.exe"
        for button in ("Cancel", "&Save"):
            await self.hand.do("push Wrenlow Update\tDownload", "open")
            await self.shows("Save Setup File")
            self.assertIn("wrenlow18.exe", (await self.hand.ask("read Save Setup File")).split("\t"))
            await self.hand.do(f"fill Save Setup File\t0\t{place}", "filled")
            await self.hand.do(f"push Save Setup File\t{button}", "closed")
        self.assertEqual((await self.hand.next_box()).title, "Download Complete")
        await self.undisturbed()
        await self.hand.press(OK)
        self.assertEqual(os.listdir(folder.name), ["chosen.exe"])
        with open(folder.name + "/chosen.exe", "rb") as file:
            self.assertTrue(file.read() == setup)
