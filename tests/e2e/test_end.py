"""The end of the program; the next test begins with a new one."""
import asyncio
import socket

from sandbox.client import socks4_request
from sandbox.desk import Hand
from sandbox.record import PATIENCE
from sandbox.wire import DATA, HELLO, SIGN_ON
from tests.e2e import support
from tests.e2e.support import RelayTest, frame, waiting_in_the_kernel, within
from tests.e2e.target import listens, wait_until

FRAME = 1000  # bytes, the header among them
FRAMES = 32_000  # together far more than all buffers between the server and a reader that does not read


class End(RelayTest):
    async def asyncTearDown(self):
        pass  # the program is gone, as it should be

    async def test_what_is_queued_for_a_slow_reader_goes_out_before_a_clean_exit(self):
        await self.goes_out_before(lambda: asyncio.to_thread(support.program.ask_to_end))

    async def test_and_before_the_windows_session_ends(self):
        if support.target.name != "exe":
            self.skipTest("a signal ends the native program")
        hand = await Hand.reach_out(support.target.hand)
        self.addAsyncCleanup(hand.rest)

        async def end_session():
            await asyncio.to_thread(support.program.expect_end)
            await hand.do("end session", "ended")
        await self.goes_out_before(end_session)

    async def goes_out_before(self, end):
        port, next_arrival = await self.bare_server()
        slow = socket.socket()
        slow.settimeout(PATIENCE)
        slow.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        slow.connect(support.program.address)
        self.addCleanup(slow.close)
        slow.sendall(socks4_request("127.0.0.1", port))
        self.assertEqual(slow.recv(8, socket.MSG_WAITALL)[:2], b"\0\x5A")
        slow.sendall(frame(SIGN_ON, 1, HELLO))
        _, server = await next_arrival()
        stream = b"".join(frame(DATA, number, bytes(FRAME - 6)) for number in range(FRAMES))
        server.write(stream)
        taken = len(stream) - await within(left_when_nothing_moves(server))

        ending = asyncio.create_task(end())
        await asyncio.to_thread(wait_until, lambda: not listens(support.program.port), "the program does not begin to end")
        arrived = await within(asyncio.to_thread(read_to_the_end, slow))
        await ending
        self.assertEqual(len(arrived) % FRAME, 0)
        self.assertGreaterEqual(len(arrived), taken // FRAME * FRAME)
        self.assertTrue(stream.startswith(arrived))
        self.assertEqual(await asyncio.to_thread(support.program.wait), 0, support.program.output())


async def left_when_nothing_moves(server):
    """How many bytes written to the server's connection the process at the other end has not read, once that stands still.

    Taken too early it is too much, which makes the test lenient and never wrong.
    """
    before, unchanged = None, 0
    while unchanged < 10:
        await asyncio.sleep(0.05)
        now = server.transport.get_write_buffer_size() + waiting_in_the_kernel(server.get_extra_info("socket"))
        unchanged = unchanged + 1 if now == before else 0
        before = now
    return before


def read_to_the_end(connection):
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
    chunks = []
    while chunk := connection.recv(65536):
        chunks.append(chunk)
    return b"".join(chunks)
