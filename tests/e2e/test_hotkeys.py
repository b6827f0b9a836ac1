"""Hotkeys of wrenlow.exe, pressed on the keyboard: their effect at the service, and the end of everything by "Panic!"."""
import asyncio
import os
import shutil
import subprocess
import tempfile

from sandbox.program import of_windows, run_in_wine
from sandbox.wire import parse_tlvs
from tests.e2e import support
from tests.e2e.support import RelayTest, within
from tests.e2e.target import PATIENCE

KEY = r"HKCU\software\Wrenlow"
HOTKEYS = [("Ctrl+Shift+F8", "Set Away", "Gone to the sea"), ("Ctrl+Alt+K", "Clear Away", " "), ("Ctrl+Shift+F9", "Panic!", " ")]
CONTROL, SHIFT, ALT, K, F8, F9 = 17, 16, 18, 75, 119, 120  # virtual-key codes


def store(key, name, text):
    run_in_wine(of_windows("reg"), "add", key, "/v", name, "/d", text, "/f")


class Hotkeys(RelayTest):
    async def asyncSetUp(self):
        if support.target.name != "exe":
            self.skipTest("only wrenlow.exe has hotkeys")
        store(KEY, "enablehotkey", "1")
        store(KEY + r"\hotkeys", "n", "2000000000")  # a damaged list counts as far as it goes
        for number, parts in enumerate(HOTKEYS, 1):
            for suffix, text in zip(("n", "nt", "na"), parts):
                store(KEY + r"\hotkeys", f"{number}{suffix}", text)
        self.addCleanup(run_in_wine, of_windows("reg"), "delete", KEY, "/f")
        self.discard()  # it is started with these settings now
        await super().asyncSetUp()

    async def asyncTearDown(self):
        pass  # the program is gone, as it should be

    async def press(self, *codes):
        await asyncio.to_thread(run_in_wine, support.target.hand, "keys", *map(str, codes))

    async def until_back(self, name):
        while self.service.user(name).away:
            await asyncio.sleep(0.02)

    async def test_they_set_and_clear_the_away_message_and_end_aim_and_the_program(self):
        ada = self.client("Ada Sample", victim=True)
        await ada.sign_on()
        await self.press(CONTROL, SHIFT, F8)
        away = await self.service.received("Ada Sample", 2, 4)
        self.assertEqual(parse_tlvs(away.data)[4], b"Gone to the sea")
        await self.press(CONTROL, ALT, K)
        await within(self.until_back("Ada Sample"))

        with tempfile.TemporaryDirectory() as folder:
            aim = shutil.copy(support.target.hand, os.path.join(folder, "aim.exe"))  # any program that stays for a while
            client = subprocess.Popen(["wine", aim], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            try:
                client.stdin.write(b"hello\n")
                client.stdin.flush()
                self.assertTrue(await within(asyncio.to_thread(client.stdout.readline)))  # it runs
                support.program.expect_end()
                await self.press(CONTROL, SHIFT, F9)
                self.assertEqual(await asyncio.to_thread(support.program.wait), 0)
                await asyncio.to_thread(client.wait, PATIENCE)
            finally:
                client.kill()
                client.communicate()
