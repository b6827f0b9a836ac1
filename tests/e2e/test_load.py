"""Many, slow and endless connections: they cost little, end cleanly, and nobody else notices them."""
import asyncio
import hashlib
import socket
import struct

from sandbox.client import socks4_request
from sandbox.wire import DATA, HELLO, SIGN_ON
from tests.e2e import support
from tests.e2e.measure import held_by, processor_seconds, sockets
from tests.e2e.support import RelayTest, within
from tests.e2e.target import PATIENCE, wait_until

LARGEST = 65_535
MOST_MEMORY = 64 * 1024  # KiB that a hostile peer may cost; what is measured is a hundredth, sanitizers take the rest
FLOOD_FRAMES = 3_200     # of the largest size: 200 MB


def blocking(address):
    connection = socket.create_connection(address)
    connection.settimeout(PATIENCE)
    return connection


class Load(RelayTest):
    """On the native program with measures; wrenlow.exe has to live through the same."""
    LONGEST = 240

    async def asyncSetUp(self):
        await super().asyncSetUp()
        self.native = support.target.name == "relay"
        self.pid = support.program.pid
        self.sockets = []
        self.addCleanup(lambda: [connection.close() for connection in self.sockets])

    def connect(self):
        connection = blocking(support.program.address)
        self.sockets.append(connection)
        return connection

    def close_all(self):
        for connection in self.sockets:
            connection.close()
        self.sockets.clear()

    async def expect_given_back(self, before):
        """Every file that the connections took is free again, and of the memory most."""
        if not self.native:
            return
        await asyncio.to_thread(wait_until, lambda: held_by(self.pid).files <= before.files, "files are not given back")
        self.assertLess(held_by(self.pid).memory - before.memory, MOST_MEMORY)

    async def test_five_hundred_silent_ones_and_frames_that_never_end(self):
        port, next_arrival = await self.bare_server()
        before = held_by(self.pid)
        silent = [self.connect() for _ in range(500)]
        for number, connection in enumerate(silent):
            connection.sendall(socks4_request("127.0.0.1", port)[:number % 8])
        endless = [await self.open_to(port) for _ in range(50)]
        servers = [await next_arrival() for _ in endless]
        for end in endless + servers:
            end[1].write(struct.pack(">BBHH", 0x2A, SIGN_ON, 1, 4) + HELLO + struct.pack(">BBHH", 0x2A, DATA, 2, LARGEST))
            end[1].write(b"x" * (LARGEST - 1))
        for end in endless + servers:
            self.assertEqual(await within(end[0].readexactly(10)), struct.pack(">BBHH", 0x2A, SIGN_ON, 1, 4) + HELLO)
        if self.native:
            self.assertLess(held_by(self.pid).memory - before.memory, MOST_MEMORY)
        for end in endless + servers:
            end[1].close()
        self.close_all()
        await self.expect_given_back(before)

    async def test_twenty_thousand_in_a_row(self):
        if not self.native:
            self.skipTest("takes minutes with the sockets of Wine; the native program has the same table")
        before = held_by(self.pid)
        await asyncio.to_thread(self.come_and_go, 20_000)
        await self.expect_given_back(before)

    def come_and_go(self, times):
        for _ in range(times):
            with blocking(support.program.address) as connection:
                connection.sendall(b"\x04\x01")
                connection.shutdown(socket.SHUT_WR)
                connection.recv(1)  # the end: taken and closed again

    async def test_a_reader_that_never_reads_under_200_MB(self):
        port, next_arrival = await self.bare_server()
        before = held_by(self.pid)
        slow = self.connect()
        slow.sendall(socks4_request("127.0.0.1", port))
        slow.recv(8, socket.MSG_WAITALL)
        slow.sendall(struct.pack(">BBHH", 0x2A, SIGN_ON, 1, 4) + HELLO)
        _, server = await next_arrival()
        flood = asyncio.create_task(self.flood(server))
        await asyncio.to_thread(self.wait_until_stuck)
        self.assertFalse(flood.done())
        if self.native:
            self.assertLess(held_by(self.pid).memory - before.memory, MOST_MEMORY)
        arrived = await asyncio.to_thread(self.read_flood, slow)
        self.assertEqual(arrived, await within(flood))
        server.close()

    async def flood(self, writer):
        """Sends the flood as fast as it is taken; gives the sum of its bytes."""
        checksum = hashlib.md5()
        for number in range(FLOOD_FRAMES):
            frame = struct.pack(">BBHH", 0x2A, DATA, number, LARGEST) + bytes([number & 0xFF]) * LARGEST
            checksum.update(frame)
            writer.write(frame)
            await writer.drain()
        return checksum.digest()

    @staticmethod
    def read_flood(connection):
        checksum, left = hashlib.md5(), FLOOD_FRAMES * (LARGEST + 6)
        while left:
            chunk = connection.recv(min(left, 1 << 18))
            if not chunk:
                return f"{left} bytes are missing"
            checksum.update(chunk)
            left -= len(chunk)
        return checksum.digest()

    def wait_until_stuck(self):
        """Until the program has stood still for a moment, apart from the bystanders' trifles."""
        spent = [processor_seconds(self.pid)]

        def idle():
            spent.append(processor_seconds(self.pid))
            return len(spent) > 20 and spent[-1] - spent[-20] < 0.2
        wait_until(idle, "the flood does not get stuck")

    async def test_a_server_that_does_not_answer(self):
        full = socket.socket()
        self.addCleanup(full.close)
        full.bind(("127.0.0.1", 0))
        full.listen(0)
        with socket.create_connection(full.getsockname()):  # now the next one waits for an answer
            before = held_by(self.pid)
            for _ in range(20):
                self.connect().sendall(socks4_request(*full.getsockname()))
            port = full.getsockname()[1]
            await asyncio.to_thread(wait_until, lambda: sum(
                end.state == "SYN_SENT" and end.peer_port == port for end in sockets()) == 20, "not all of them wait")
            self.close_all()
            await self.expect_given_back(before)
