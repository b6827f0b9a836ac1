"""Whatever one connection brings, the conversation of two others goes on and the program stays."""
import asyncio
import socket
import struct

from sandbox.wire import DATA, HELLO, SIGN_ON
from tests.e2e import support
from tests.e2e.measure import KEEP_ALIVE, sockets
from tests.e2e.support import RelayTest, frame, within
from tests.e2e.target import free_port, wait_until

ENDLESS = "a host name without an end"
HEADER_OF_A_LONG_FRAME = b"\x2A\x02\x00\x02\x10\x00"


def reset(writer):
    """Breaks the connection with a reset."""
    connection = writer.get_extra_info("socket")
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    writer.transport.abort()


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

    async def test_a_server_that_vanishes(self):
        service = await self.new_service()
        ada = self.client("Ada", service, victim=True)
        await ada.sign_on()
        service.user("Ada").connection.stream.reset()
        with self.assertRaises(ConnectionError):
            await ada.hear()

    async def test_a_server_that_ends_in_mid_frame(self):
        port, next_arrival = await self.bare_server()
        for last in (b"\x2A", b"\x2A\x02\x00", HEADER_OF_A_LONG_FRAME, HEADER_OF_A_LONG_FRAME + b"part"):
            with self.subTest(last=last.hex(" ")):
                reader, _writer = await self.open_to(port)
                _, server = await next_arrival()
                whole = b"\x2A\x02\x00\x01\x00\x01x"
                server.write(whole + last)
                server.close()
                self.assertEqual(await within(reader.read()), whole)

    async def test_resets_in_mid_frame_from_either_side(self):
        port, next_arrival = await self.bare_server()
        for breaker in ("client", "server"):
            with self.subTest(breaker=breaker):
                client = await self.open_to(port)
                server = await next_arrival()
                client[1].write(struct.pack(">BBHH", 0x2A, SIGN_ON, 1, 4) + HELLO)
                await within(server[0].readexactly(10))
                broken, other = (client, server) if breaker == "client" else (server, client)
                broken[1].write(HEADER_OF_A_LONG_FRAME + b"part")
                reset(broken[1])
                try:
                    self.assertEqual(await within(other[0].read()), b"")
                except ConnectionResetError:
                    pass  # passing the reset on is fine too

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

    async def test_frames_that_are_none(self):
        port, next_arrival = await self.bare_server()
        _reader, writer = await self.open_to(port)
        reader, server = await next_arrival()
        writer.write(b"\xFF" * 70_000 + b"GET / HTTP/1.0\r\n\r\n")
        # Read as a header of 65,535 bytes; the marker is put right, the rest is an incomplete frame.
        self.assertEqual(await within(reader.readexactly(65_541)), b"\x2A" + b"\xFF" * 65_540)
        server.close()

    async def test_a_port_that_is_taken(self):
        if support.target.name == "exe":
            self.skipTest("tried with the windows of the program, in the tests of its start")
        second = support.target.start(support.program.port)
        self.addCleanup(second.kill)
        status = await asyncio.to_thread(second.wait)
        self.assertGreater(status, 0)
        self.assertIn(str(support.program.port), second.output())
