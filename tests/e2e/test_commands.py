"""The console of wrenlow-relay. Frames that the program puts into a session of its own accord are asked for there; a gap or a
repeat in the numbers, or a mixed-up frame, would end the connection as a fault of the service. And whatever happens to input,
output and folders, nobody is held up."""
import asyncio
import contextlib
import os
import signal
import socket
import tempfile

from sandbox.wire import DATA, snac, tlv
from tests.e2e import support
from tests.e2e.support import RelayTest, within

VISITORS = 3_000  # two lines each: more than a pipe takes

TYPE = b'text/aolrtf; charset="us-ascii"'
UCS2 = b'text/aolrtf; charset="unicode-2-0"'


def away(text, kind=TYPE):
    return snac(2, 4, tlv(3, kind) + tlv(4, text))


def profile(text, kind=TYPE):
    return snac(2, 4, tlv(1, kind) + tlv(2, text))


def idle(seconds):
    return snac(1, 0x11, seconds.to_bytes(4, "big"))


# What is typed for Ada Sample, and the payload that the server gets.
COMMANDS = [
    ("away adasample Gone to the <i>sea</i>", away(b"Gone to the <i>sea</i>")),
    ("BACK AdaSample", away(b"")),
    ("away adasample na\u00efve \u20ac", away(b"na\xefve \x80")),
    ("away adasample \u65e5\u672c \U0001f600", away("\u65e5\u672c \U0001f600".encode("utf-16-be"), UCS2)),
    ("profile adasample \u65e5", profile("\u65e5".encode("utf-16-be"), UCS2)),
    ("idle ADASAMPLE 10", idle(600)),
    ("idle adasample 1092", idle(65520)),
    ("idle adasample 0", idle(0)),
    ("profile adasample <b>new</b>  page", profile(b"<b>new</b>  page")),
    ("profile adasample " + "x" * 300, profile(b"x" * 300)),
]


class Commands(RelayTest):
    async def asyncSetUp(self):
        if support.target.name != "relay":
            self.skipTest("wrenlow.exe has dialogs instead, tested with its windows")
        await super().asyncSetUp()

    def start(self, **options):
        """A program of the test's own."""
        program = support.start(**options)
        self.addCleanup(program.kill)
        return program

    async def answers(self, line, answer):
        """Types a line and waits for the answer."""
        before = len(support.program.output())
        support.program.say(line)
        await self.says(support.program, answer, before)

    async def says(self, program, answer, before=0):
        """Waits for a line of output."""
        async def look():
            while answer not in program.output()[before:].splitlines():
                await asyncio.sleep(0.01)
        await within(look())

    def payloads(self, name):
        """Of the frames that came from this name's BOS connection, with consecutive numbers."""
        events = [event for event in self.service.events.items if event.kind == "received" and event.name == name
                  and event.connection == "bos"]
        numbers = [event.frame.seq for event in events]
        self.assertEqual(numbers, list(range(numbers[0], numbers[0] + len(numbers))))
        # Two seconds after a sign-on the program asks for what waits.
        return [event.frame.payload for event in events if event.frame.channel == DATA and event.frame.snac != (4, 0x10)]

    async def test_commands_are_frames_of_the_client_to_the_byte(self):
        ada = self.client("Ada Sample")
        await ada.sign_on()
        frames_before = len(ada.bos.frames.items)
        for line, _ in COMMANDS:
            await self.answers(line, f"Sent for {line.split()[1]}.")
        await ada.say("Ada Sample", "to myself")
        self.assertEqual(await ada.hear(), ("Ada Sample", "to myself"))
        self.assertEqual(self.payloads("Ada Sample")[-len(COMMANDS) - 1:-1], [payload for _, payload in COMMANDS])
        self.assertEqual(len(ada.bos.frames.items), frames_before)  # the client was shown nothing of it

    async def test_a_line_that_is_too_long_is_left_out_to_its_end(self):
        await self.answers("x" * 65_536 + "quit", "A command of more than 65536 bytes was left out.")
        await self.answers("names", "Nobody is signed on.")

    async def test_a_terminal_that_nobody_reads_holds_nothing_up_and_gets_whole_lines(self):
        before = len(support.program.output())
        await self.answers("help", "NAME is a screen name without its blanks, or (all).")
        whole = set(support.program.output()[before:].splitlines())
        ours, its = os.openpty()
        program = self.start(output=its)
        self.addCleanup(os.close, ours)
        os.close(its)
        program.say("help\n" * 1000)
        program.say("names\n")
        await self.expect_works(program)
        program.ask_to_end()
        self.assertEqual(program.wait(), 0)
        shown = b""
        with contextlib.suppress(OSError):  # the other side has been closed
            while part := os.read(ours, 65_536):
                shown += part
        lines = shown.decode().split("\r\n")
        self.assertGreater(len(lines), 50)
        self.assertEqual({line for line in lines[1:-1] if not line.startswith("connection ")} - whole, set())

    async def test_streams_that_are_closed_at_the_start_do_no_harm(self):
        for closed in ("<&-", "<&- >&- 2>&-"):
            with self.subTest(closed=closed):
                program = self.start(closed=closed)
                await self.expect_works(program)
                program.ask_to_end()
                self.assertEqual(program.wait(), 0)

    async def expect_works(self, program):
        """Somebody signs on and hears himself; the bystander is heard, too."""
        ada = self.client("Ada", through=program)
        await ada.sign_on()
        await ada.say("Ada", "still there?")
        self.assertEqual(await ada.hear(), ("Ada", "still there?"))
        await asyncio.to_thread(support.Bystanders.ask, program.bystander, self)

    async def test_output_that_nobody_reads_and_then_nobody_can(self):
        reading, writing = os.pipe()
        program = self.start(output=writing)
        os.close(writing)
        await asyncio.to_thread(self.visit, program, VISITORS)
        await self.expect_works(program)
        os.close(reading)
        await asyncio.to_thread(self.visit, program, 10)
        await self.expect_works(program)
        program.ask_to_end()
        self.assertEqual(await asyncio.to_thread(program.wait), 0)

    def visit(self, program, times):
        for _ in range(times):
            with socket.create_connection(program.address, timeout=20) as connection:
                connection.shutdown(socket.SHUT_WR)
                connection.recv(1)

    async def test_a_data_folder_that_nothing_can_be_written_to(self):
        await self.expect_works(self.start(data="/proc/self/fdinfo"))

    async def test_input_in_pieces_or_from_a_file_is_read_and_its_end_ends_the_commands_and_nothing_else(self):
        with tempfile.TemporaryFile() as file:
            file.write(b"names\nnames")
            file.seek(0)
            pipe, from_file = self.start(), self.start(stdin=file)
        pipe.say("names", "\nna")
        await self.says(pipe, "Nobody is signed on.")
        pipe.say("mes", "\r\n\n")
        pipe.end_input()
        for program, number in ((pipe, signal.SIGINT), (from_file, signal.SIGHUP)):
            await self.says(program, "standard input has ended, and commands with it; Ctrl-C ends the program")
            self.assertEqual(program.output().count("Nobody is signed on."), 2)
            await self.expect_works(program)
            program.ask_to_end(number)
            self.assertEqual(program.wait(), 0)
