"""The SOCKS4 handshake, and the first bytes after it."""
import asyncio
import re
import socket
import struct
import time

from sandbox.client import socks4_request
from sandbox.wire import HELLO, SIGN_ON
from tests.e2e import support
from tests.e2e.support import RelayTest, waiting_in_the_kernel, within
from tests.e2e.target import free_port, wait_until

SERVER_HELLO = struct.pack(">BBHH", 0x2A, SIGN_ON, 100, 4) + HELLO
CLIENT_HELLO = struct.pack(">BBHH", 0x2A, SIGN_ON, 1, 4) + HELLO


class Handshake(RelayTest):
    async def expect_session(self, reader, writer, reply):
        """The reply, and then a session in which both greetings arrive."""
        self.assertEqual(await within(reader.readexactly(8)), reply)
        writer.write(CLIENT_HELLO)
        self.assertEqual(await within(reader.readexactly(len(SERVER_HELLO))), SERVER_HELLO)
        event = await self.service.events.find(lambda event: event.kind == "received")
        self.assertEqual(event.frame.payload, HELLO)

    async def test_bytes_sent_while_the_server_is_being_connected_are_discarded(self):
        busy = socket.socket()
        busy.bind(("127.0.0.1", 0))
        busy.listen(0)  # one connection fits into the backlog; the system tries the next one again after a second
        busy.setblocking(False)
        port = busy.getsockname()[1]
        loop = asyncio.get_running_loop()
        filler = socket.create_connection(("127.0.0.1", port))
        accepted = []
        self.addCleanup(lambda: [each.close() for each in (busy, filler, *accepted)])

        reader, writer = await self.open()
        for early in (socks4_request("127.0.0.1", port), CLIENT_HELLO, b"and more"):
            writer.write(early)
            while waiting_in_the_kernel(writer.get_extra_info("socket")):
                await asyncio.sleep(0.01)
        for _ in range(2):
            accepted.append((await within(loop.sock_accept(busy)))[0])
        self.assertEqual((await within(reader.readexactly(8)))[:2], b"\0\x5A")
        writer.write(CLIENT_HELLO)
        arrived = b""
        while len(arrived) < len(CLIENT_HELLO):
            arrived += await within(loop.sock_recv(accepted[1], 4096))
        self.assertEqual(arrived, CLIENT_HELLO)

    async def test_a_host_name_is_resolved_by_the_program(self):
        for address in (b"\0\0\0\1", b"\0\0\0\0"):
            with self.subTest(address=address.hex()):
                self.service.events.items.clear()
                reader, writer = await self.open()
                target = struct.pack(">H", self.service.port) + address
                writer.write(b"\x04\x01" + target + b"user\0" + b"localhost\0")
                await self.expect_session(reader, writer, b"\0\x5A" + target)

    async def test_the_reply_comes_alone_and_the_server_waits_for_the_client(self):
        # The wait is bounded, so a busy machine can make a right program look hasty, but not every time; a hasty
        # program is hasty every time.
        for _ in range(20):
            reader, _writer = await self.open_to(self.service.port)
            granted = time.monotonic()
            self.assertEqual(await within(reader.readexactly(len(SERVER_HELLO))), SERVER_HELLO)  # it comes in any case
            if time.monotonic() - granted > 0.03:
                return
        self.fail("the server's first frame followed the reply at once, 20 times in a row")

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
