"""What a feature cannot do costs one report; the frame goes on as it was, and so does everything after it."""
import asyncio
import contextlib
import os
import resource
import shutil
import signal
import subprocess
from pathlib import Path

from sandbox.desk import Hand, until
from tests.e2e import support
from tests.e2e.support import FeatureTest

SLOW = 1.1  # seconds; a write that takes more than one makes logging pause


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

    async def survives(self, folder, spoil, mend, lost="lost", told=1):
        """What is said while the log is spoilt is missing there, which is reported once, and nothing else is lost."""
        await self.sign_on()
        self.log_to(folder)
        await self.say("first", 0)
        await spoil()
        await self.say(lost, told)
        await mend()
        await self.say("last", 0)
        self.expect_lines(folder, b"first", b"last")

    async def test_a_full_disk_leaves_no_half_line(self):
        folder = self.mount()
        filler = Path(folder, "filler")

        async def fill():
            with open(filler, "wb", buffering=0) as file, contextlib.suppress(OSError):
                while file.write(bytes(4096)):
                    pass
        await self.survives(folder, fill, call(filler.unlink), lost="x" * 5000)  # more than is left of the log's last block

    def limit(self, kind):
        """A function that gives one of the program's limits another value; it is lifted in the end."""
        if support.target.name != "relay":
            self.skipTest("Windows has no such limit")
        soft, hard = resource.prlimit(support.program.pid, kind)

        def change(value=soft):
            resource.prlimit(support.program.pid, kind, (value, hard))
        self.addCleanup(change)
        return change

    async def test_a_limit_for_files_leaves_no_half_line_and_ends_nothing(self):
        limit, folder = self.limit(resource.RLIMIT_FSIZE), self.folder()

        async def spoil():
            limit(next(Path(folder).iterdir()).stat().st_size + 5)
        await self.survives(folder, spoil, call(limit), told=0)  # its output is a file, too

    async def test_the_last_descriptor_taken(self):
        limit = self.limit(resource.RLIMIT_NOFILE)  # told: the settings cannot be read, nor the log written
        await self.survives(self.folder(), call(limit, 3), call(limit), told=2)

    async def test_a_share_that_stands_still_is_left_alone_after_the_first_message(self):
        if support.target.name != "relay" or os.geteuid() != 0 or not shutil.which("bindfs"):
            self.skipTest("only bindfs, run by root, makes a share that can be stopped")
        behind, folder = self.folder(), self.folder()
        share = subprocess.Popen(["bindfs", "-f", behind, folder])

        def end():
            share.send_signal(signal.SIGCONT)
            subprocess.run(["umount", "--lazy", folder], check=False)
            share.wait()
        self.addCleanup(end)
        await until(lambda: os.path.ismount(folder) or share.poll() is not None, "the share")
        if share.poll() is not None:
            self.skipTest("nothing can be mounted here")
        await self.sign_on()
        self.log_to(folder)
        await self.say("first", 0)

        share.send_signal(signal.SIGSTOP)
        held = asyncio.create_task(self.say("held", 1))
        await until(self.waits_for_the_share, "the write to stand still")
        await asyncio.sleep(SLOW)
        share.send_signal(signal.SIGCONT)
        await held
        share.send_signal(signal.SIGSTOP)
        await self.say("passes", 0)
        share.send_signal(signal.SIGCONT)
        self.assertEqual(self.logs(folder), {"AdaSample DATE.txt": b"Ada Sample (TIME): first\r\nAdaSample (TIME): first\r\n"
                                                                   b"Ada Sample (TIME): held\r\n"})

    @staticmethod
    def waits_for_the_share():
        return Path("/proc", str(support.program.pid), "wchan").read_text() == "request_wait_answer"

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


def call(function, *arguments, **options):
    """The call as a coroutine function."""
    async def called():
        function(*arguments, **options)
    return called
