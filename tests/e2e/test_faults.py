"""What a feature cannot do costs one report; the frame goes on as it was, and so does everything after it."""
import contextlib
import os
import subprocess
from pathlib import Path

from sandbox.desk import Hand
from sandbox.wire import DATA, pack_message, pack_name, snac, tlv
from tests.e2e import support
from tests.e2e.support import FeatureTest, frame, within

IM_HEAD = b"cookie..\0\1" + pack_name("tomsample")
NO_INFO = b"\0\0\0\0"  # warning level, count of TLVs
CUT_TLV = b"\0\2\0"

# What is wrong, the SNAC (if it is one), its data and the reports that this costs.
FROM_CLIENT = [
    ("a SNAC that ends in its header", None, b"\0\4\0\6\0", 0),
    ("a sign-on without data", (0x17, 2), b"", 1),
    ("an IM without data", (4, 6), b"", 1),
    ("an IM with a cut-off name", (4, 6), IM_HEAD[:-1], 1),
    ("an IM with a cut-off TLV", (4, 6), IM_HEAD + CUT_TLV, 1),
    ("an IM with a damaged message", (4, 6), IM_HEAD + tlv(2, b"\5\1\xff\xff"), 0),
    ("an IM with a cut-off text", (4, 6), IM_HEAD + tlv(2, pack_message("long text")[:-6]), 0),
]
FROM_SERVER = [
    ("a SNAC that ends in its header", None, b"\0\4\0\7\0", 0),
    ("a self-information without data", (1, 0xF), b"", 1),
    ("an IM with a cut-off sender", (4, 7), IM_HEAD + b"\0", 1),
    ("an IM that counts too many TLVs", (4, 7), IM_HEAD + b"\0\0\xff\xff" + tlv(1), 1),
    ("an IM with a damaged message", (4, 7), IM_HEAD + NO_INFO + tlv(2, b"\5"), 0),
    *((f"an IM from {name!r}", (4, 7), IM_HEAD[:10] + pack_name(name) + NO_INFO + tlv(2, pack_message("hi")), 0)
      for name in ("../../up", "..\\..\\up", "C:\\up", "con", "..")),
    ("a user-information reply without data", (2, 6), b"", 1),
    ("a user-information reply with a cut-off name", (2, 6), b"\x10tomsample", 1),
    ("a user-information reply with a cut-off TLV", (2, 6), pack_name("tomsample") + NO_INFO + CUT_TLV, 1),
    ("a profile that its source makes too long", (2, 6), pack_name("tomsample") + NO_INFO + tlv(2, b"x" * 40_000), 1),
]


class Malformed(FeatureTest):
    async def send_all(self, cases, source, sink):
        """Sends each case and a whole message behind it; both must arrive as they are."""
        for number, (what, kind, data, reports) in enumerate(cases):
            with self.subTest(what=what):
                data = frame(DATA, number, snac(*kind, data) if kind else data)
                source.write(data)
                received = await within(sink.readexactly(len(data)))
                self.assertEqual(received[:2] + received[4:], data[:2] + data[4:])  # but for the number
                self.expect_reports(reports)

    async def test_frames_from_the_client_pass_unchanged(self):
        self.log_to()
        (_, client), (server, _) = await self.pair()
        await self.send_all(FROM_CLIENT, client, server)

    async def test_frames_from_the_server_pass_unchanged_and_name_no_path(self):
        outside = self.folder()
        os.makedirs(outside + "/in/side")
        self.log_to(outside + "/in/side", logfolder="1")
        self.settings(seehtml="1")
        (client, _), (_, server) = await self.pair()
        await self.send_all(FROM_SERVER, server, client)
        found = [os.path.relpath(path, outside) for path, folders, _ in os.walk(outside) if not folders]
        self.assertGreaterEqual(len(found), 4)  # a folder for each of the names
        self.assertTrue(all(path.startswith("in/side/") for path in found), found)

    async def test_nothing_is_reported_of_messages_that_nobody_logs(self):
        (_, client), (server, _) = await self.pair()
        cases = [(what, kind, data, 0) for what, kind, data, _ in FROM_CLIENT if kind == (4, 6)]
        await self.send_all(cases, client, server)


class LogFolders(FeatureTest):
    async def say(self, text, reports):
        """A message to oneself, which is logged on its way out and on its way in."""
        await self.ada.say("Ada Sample", text)
        self.assertEqual(await self.ada.hear(), ("Ada Sample", text))
        self.expect_reports(reports)

    async def sign_on(self):
        self.ada = self.client("Ada Sample")
        await self.ada.sign_on()

    def mount(self):
        """A folder on a disk of its own, in memory, with 64 KiB."""
        if os.geteuid() != 0:
            self.skipTest("only root can mount a file system that is full or read-only")
        folder = self.folder()
        command = ["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", folder]
        if subprocess.run(command, stderr=subprocess.DEVNULL, check=False).returncode != 0:
            self.skipTest("nothing can be mounted here")
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)
        return folder

    def expect_lines(self, folder, *texts):
        lines = b"".join(b"Ada Sample (TIME): %s\r\nAdaSample (TIME): %s\r\n" % (text, text) for text in texts)
        self.assertEqual(self.logs(folder), {"AdaSample DATE.txt": lines})

    async def survives(self, folder, spoil, mend, begun=True, lost="lost"):
        """What is said while the log is spoilt is missing there, each line costs one report, and nothing else is lost."""
        await self.sign_on()
        self.log_to(folder)
        if begun:
            await self.say("first", 0)
        await spoil()
        await self.say(lost, 2)
        await mend()
        await self.say("last", 0)
        self.expect_lines(folder, *([b"first"] if begun else []), b"last")

    async def test_a_folder_that_cannot_be_made(self):
        folder = self.folder() + "/missing"
        await self.survives(folder + "/deep", nothing, call(os.mkdir, folder), begun=False)

    async def test_a_file_in_the_folders_place(self):
        folder = self.folder() + "/file"
        await self.survives(folder, call(Path(folder).touch), call(os.remove, folder), begun=False)

    async def test_a_read_only_folder(self):
        folder = self.mount()
        await self.survives(folder, *(call(subprocess.run, ["mount", "-o", "remount," + mode, folder], check=True)
                                      for mode in ("ro", "rw")))

    async def test_a_full_disk_leaves_no_half_line(self):
        folder = self.mount()
        filler = Path(folder, "filler")

        async def fill():
            with open(filler, "wb", buffering=0) as file, contextlib.suppress(OSError):
                while file.write(bytes(4096)):
                    pass
        await self.survives(folder, fill, call(filler.unlink), lost="x" * 5000)  # more than is left of the log's last block

    async def test_a_file_that_another_program_has_locked(self):
        if support.target.name != "exe":
            self.skipTest("only Windows has locks that keep others out")
        hand = await Hand.reach_out(support.target.hand)
        self.addAsyncCleanup(hand.rest)
        folder = self.folder()

        async def lock():
            await hand.do("lock " + support.target.settings.path(str(next(Path(folder).iterdir()))), "locked")
        await self.survives(folder, lock, lambda: hand.do("unlock", "unlocked"))


class Settings(FeatureTest):
    async def test_values_that_are_none_count_as_nothing(self):
        ada = self.client("Ada Sample")
        await ada.sign_on()
        support.target.settings.spoil()
        self.addCleanup(support.target.settings.mend)
        await ada.say("Ada Sample", "unspoilt")
        self.assertEqual(await ada.hear(), ("Ada Sample", "unspoilt"))
        self.expect_reports(0)


async def nothing():
    pass


def call(function, *arguments, **options):
    """The call as a coroutine function."""
    async def called():
        function(*arguments, **options)
    return called


class AliasFiles(FeatureTest):
    async def test_a_list_that_is_odd_huge_or_binary(self):
        huge = b"".join(b"name%d\r\nalias%d\r\n" % (number, number) for number in range(60_000))
        cases = [
            ("missing", None, 0, "name1"),
            ("empty", b"", 0, "name1"),
            ("an odd number of lines", b"name1\r\nalias1\r\nname2", 0, "alias1"),
            ("more than is read", huge, 1, "alias1"),
            ("names that are too long", b"n" * 300 + b"\r\nx\r\nname1\r\nalias1\r\n", 1, "alias1"),
            ("one endless line", b"n" * 2_000_000, 1, "name1"),
            ("any bytes", bytes(range(256)) * 200, 0, "name1"),
        ]
        for what, data, reports, shown in cases:
            with self.subTest(what=what):
                self.aliases(data)
                (client, _), (_, server) = await self.pair()
                server.write(frame(DATA, 101, snac(3, 0xB, pack_name("name1"))))
                expected = frame(DATA, 101, snac(3, 0xB, pack_name(shown)))
                self.assertEqual(await within(client.readexactly(len(expected))), expected)
                self.expect_reports(reports)
