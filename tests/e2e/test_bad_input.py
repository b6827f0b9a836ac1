"""Whatever one connection brings, the conversation of two others goes on and the program stays."""
import asyncio
import re
import struct

from sandbox.client import socks4_request
from sandbox.wire import DATA
from tests.e2e import support
from tests.e2e.measure import KEEP_ALIVE, sockets
from tests.e2e.support import RelayTest, frame, within
from tests.e2e.target import free_port, wait_until

ENDLESS = "a host name without an end"


class BadInput(RelayTest):
    async def test_something_else_than_a_request(self):
        dead_end = struct.pack(">H", free_port()) + b"\x7f\0\0\1"
        cases = {
            "random bytes": b"\x99\x77" + dead_end + bytes(range(256)) * 8,
            "the beginning of an HTTP request": b"GET / H",
            "a SOCKS5 greeting": b"\x05\x01\x00",
            "half a request": b"\x04\x01\x14\x46\x7f",
            ENDLESS: b"\x04\x01\x14\x46\0\0\0\1" + b"x" * 2000,
            "nothing": b"",
        }
        for what, data in cases.items():
            with self.subTest(what=what):
                reader, writer = await self.open()
                writer.write(data)
                if what != ENDLESS:
                    writer.write_eof()
                try:
                    self.assertEqual(await within(reader.read()), b"")
                except ConnectionResetError:
                    pass  # bytes that nobody wanted to read were left: as good an end as any

    async def test_a_server_that_goes_without_a_word_is_asked_for_after_a_minute(self):
        _, (_, server) = await self.pair()
        here, there = (server.get_extra_info(name)[1] for name in ("sockname", "peername"))

        def next_probe():
            own = next(socket for socket in sockets() if (socket.port, socket.peer_port) == (there, here))
            return own.when if own.timer == KEEP_ALIVE else float("inf")
        await asyncio.to_thread(wait_until, lambda: next_probe() <= 60, "no probe of the connection is due in a minute")

    async def test_half_closed_connections_end_whole_from_either_side(self):
        for first in ("client", "server"):
            with self.subTest(first=first):
                client, server = await self.pair()
                leaver, stayer, number = (client, server, 2) if first == "client" else (server, client, 101)
                last = frame(DATA, number, b"words")
                leaver[1].write(last)
                leaver[1].write_eof()
                self.assertEqual(await within(stayer[0].read()), last)
                self.assertEqual(await within(leaver[0].read()), b"")

    async def test_a_port_that_is_taken(self):
        if support.target.name == "exe":
            self.skipTest("tried with the windows of the program, in the tests of its start")
        second = support.target.start(support.program.port)
        self.addCleanup(second.kill)
        status = await asyncio.to_thread(second.wait)
        self.assertGreater(status, 0)
        self.assertIn(str(support.program.port), second.output())

    async def test_the_console_tells_connections_apart_by_their_slots(self):
        if support.target.name != "relay":
            self.skipTest("wrenlow.exe has no console")
        port, _ = await self.bare_server()
        _, (_, second) = [await self.open_to(port) for _ in range(2)]
        slots = re.findall(rf"connection (\d+) opened to 127.0.0.1:{port}\n", support.program.output())
        self.assertEqual(len(set(slots)), 2)
        second.close()
        last = f"connection {slots[1]} closed\n"
        await asyncio.to_thread(wait_until, lambda: last in support.program.output(), "the second slot's end")

    async def test_a_refused_connection_closes_without_a_reply_and_the_console_says_why(self):
        def told(reason):
            return len(re.findall(f" closed: {reason}\n", support.program.output()))

        # With a name server, and without one.
        unknown = "(Name or service not known|No address associated with hostname|Temporary failure in name resolution)"
        for host, reason in (("no-such-name.invalid", unknown), ("127.0.0.1", "Connection refused")):
            with self.subTest(host=host):
                before = told(reason)
                reader, writer = await self.open()
                writer.write(socks4_request(host, free_port()))
                self.assertEqual(await within(reader.read()), b"")
                if support.target.name == "relay":
                    await asyncio.to_thread(wait_until, lambda: told(reason) > before, "the reason on the console")
