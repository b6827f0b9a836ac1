"""Many connections that wait and frames that never end: they cost little, end cleanly, and nobody else notices them."""
import asyncio
import socket

from sandbox.client import socks4_request
from sandbox.wire import DATA, HELLO, SIGN_ON
from tests.e2e import support
from tests.e2e.measure import held_by, sockets
from tests.e2e.support import RelayTest, frame, within
from tests.e2e.target import PATIENCE, wait_until

LARGEST = 65_535
MOST_MEMORY = 64 * 1024  # KiB that a hostile peer may cost; what is measured is a hundredth, sanitizers take the rest


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
        connection = socket.create_connection(support.program.address, PATIENCE)
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
        hello = frame(SIGN_ON, 1, HELLO)
        for end in endless + servers:
            end[1].write(hello + frame(DATA, 2, bytes(LARGEST))[:-1])
        for end in endless + servers:
            self.assertEqual(await within(end[0].readexactly(10)), hello)
        if self.native:
            self.assertLess(held_by(self.pid).memory - before.memory, MOST_MEMORY)
        for end in endless + servers:
            end[1].close()
        self.close_all()
        await self.expect_given_back(before)

    async def test_a_server_that_does_not_answer(self):
        port = self.silent_port("127.0.0.1")

        def unanswered():
            return sum(end.state == "SYN_SENT" and end.peer_port == port for end in sockets())
        before, others = held_by(self.pid), unanswered()
        for _ in range(20):
            self.connect().sendall(socks4_request("127.0.0.1", port))
        await asyncio.to_thread(wait_until, lambda: unanswered() == others + 20, "not all of them wait")
        self.close_all()
        await self.expect_given_back(before)
