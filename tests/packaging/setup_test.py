"""The setup program and its uninstaller, run as a user would run them, and the installed program.

Only 64-bit programs run everywhere where tests run, so the setup program under test is one made for them, out of the
same script as the 32-bit one that ships.
"""
import asyncio
import os
import shutil
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from sandbox.desk import CANCEL, AimClient, Hand, until
from sandbox.program import of_windows
from sandbox.service import Service
from tests.e2e.target import Exe, listens, wait_until

from . import windows
from .windows import PROXY_KEY, RUN_KEY, SETTINGS_KEY, UNINSTALL_KEY

ROOT = Path(__file__).resolve().parents[2]
BUILT = ROOT / "build/win64/app/shell/wrenlow.exe"
OLD, NEW = "2.0.16", "2.0.17"
HAND = ROOT / "build/win64/sandbox/hand/hand.exe"
AIM = ROOT / "build/win64/sandbox/aim/aim.exe"
RETRY, YES = 4, 6  # buttons of boxes
ADDRESS = "127.0.0.1", Exe.PORT


def make_setup(folder, version, pages):
    """A setup program of this version with these pages of the manual."""
    tree = folder / f"tree-{version}"
    (tree / "manual").mkdir(parents=True)
    shutil.copy(BUILT, tree)
    for page in pages:
        (tree / "manual" / page).write_text(version)
    program = folder / f"setup-{version}.exe"
    subprocess.run([ROOT / "packaging/make-setup", "amd64-unicode", version, tree, program], check=True,
                   env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})
    return program


class Setup(unittest.IsolatedAsyncioTestCase):
    @classmethod
    def setUpClass(cls):
        cls._folder = tempfile.TemporaryDirectory()
        cls.setup = {OLD: make_setup(Path(cls._folder.name), OLD, ["index.html", "old.html"]),
                     NEW: make_setup(Path(cls._folder.name), NEW, ["index.html", "new.html"])}

    @classmethod
    def tearDownClass(cls):
        cls._folder.cleanup()

    def setUp(self):
        self.forget_user()
        self.addCleanup(self.forget_user)
        windows.write(SETTINGS_KEY, "checkupdate", "0")
        self.home = windows.local_programs() / "Wrenlow"
        shutil.rmtree(self.home, ignore_errors=True)

    @staticmethod
    def forget_user():
        for key in (SETTINGS_KEY, PROXY_KEY, UNINSTALL_KEY):
            windows.remove(key)

    def install(self, version):
        self.assertEqual(windows.run(self.setup[version], "/S"), 0)

    def uninstall(self, *arguments):
        """The uninstaller hands over to a copy of itself, so its return says nothing."""
        windows.run(self.home / "uninstall.exe", "/S", *arguments)
        wait_until(lambda: not (self.home / "uninstall.exe").exists() and windows.values(UNINSTALL_KEY) is None,
                   "the uninstaller does not end")

    def start(self):
        process = windows.start(self.home / "wrenlow.exe")
        self.addCleanup(wait_until, lambda: not listens(Exe.PORT), "Wrenlow does not end")  # be it another than this one
        self.addCleanup(process.wait)
        self.addCleanup(windows.run, of_windows("taskkill"), "/im", "wrenlow.exe")
        self.wait_until_listening()
        return process

    @staticmethod
    def wait_until_listening():
        wait_until(lambda: listens(Exe.PORT), "Wrenlow does not listen")

    def wait_until_set_up(self):
        """Wrenlow serves first and sets up the start with Windows and the AIM client behind it."""
        program = windows.windows_path(self.home / "wrenlow.exe")
        wait_until(lambda: (windows.values(RUN_KEY) or {}).get("Wrenlow") == program,
                   "Wrenlow does not start with Windows")
        wait_until(lambda: (windows.values(PROXY_KEY) or {}).get("Host") == ADDRESS[0], "AIM's proxy is not set")

    def installed(self):
        return sorted(path.relative_to(self.home).as_posix() for path in self.home.rglob("*") if path.is_file())

    def test_installs_updates_a_running_version_and_leaves_only_what_is_the_users(self):
        self.install(OLD)
        self.assertEqual(self.installed(), ["manual/index.html", "manual/old.html", "uninstall.exe", "wrenlow.exe"])
        self.assertEqual(windows.values(UNINSTALL_KEY)["DisplayVersion"], OLD)
        shortcuts = list(windows.drive_c().rglob("Start Menu/Programs/Wrenlow.lnk"))
        self.assertEqual(len(shortcuts), 1)
        self.assertIn("users", shortcuts[0].relative_to(windows.drive_c()).parts[0])  # this user's, not everybody's

        proxy = {"Enabled": 1, "Host": "proxy.example", "Port": 1080}
        for name, value in proxy.items():
            windows.write(PROXY_KEY, name, value)
        self.start()
        (self.home / "repl.dat").write_bytes(b"tomsample\r\nTom\r\n")
        (self.home / "logs").mkdir()
        (self.home / "logs/tom.txt").write_text("hello")
        self.wait_until_set_up()

        self.install(NEW)
        self.wait_until_listening()  # it has been ended to be replaced, and started again
        self.assertEqual(self.installed(), ["logs/tom.txt", "manual/index.html", "manual/new.html", "repl.dat",
                                            "uninstall.exe", "wrenlow.exe"])
        self.assertEqual((self.home / "manual/index.html").read_text(), NEW)
        self.assertEqual(windows.values(UNINSTALL_KEY)["DisplayVersion"], NEW)

        self.uninstall()
        self.assertFalse(listens(Exe.PORT), "Wrenlow still runs")
        self.assertEqual(self.installed(), ["logs/tom.txt", "repl.dat"])
        self.assertFalse(shortcuts[0].exists())
        self.assertNotIn("Wrenlow", windows.values(RUN_KEY) or {})
        self.assertEqual(windows.values(PROXY_KEY), proxy)
        self.assertEqual(windows.values(SETTINGS_KEY)["checkupdate"], "0")

    def test_moves_where_it_is_told_to_removes_settings_and_never_touches_another_proxy(self):
        self.install(OLD)
        (self.home / "repl.dat").write_bytes(b"tomsample\r\nTom\r\n")
        (self.home / "mine.txt").touch()
        windows.write(RUN_KEY, "Wrenlow", windows.windows_path(self.home / "wrenlow.exe"))
        for name, value in (("Enabled", 1), ("Host", "127.0.0.1"), ("Port", Exe.PORT)):
            windows.write(PROXY_KEY, name, value)
        before, self.home = self.home, windows.drive_c() / "Another place" / "Wrenlow"
        self.addCleanup(shutil.rmtree, self.home.parent, True)
        program, folder = map(windows.windows_path, (self.setup[NEW], self.home))
        self.assertEqual(windows.run_line(f'"{program}" /S /D={folder}'), 0)  # blanks and all, without quotes
        self.assertEqual([path.name for path in before.iterdir()], ["mine.txt"])
        self.assertEqual(self.installed(), ["manual/index.html", "manual/new.html", "repl.dat", "uninstall.exe", "wrenlow.exe"])
        self.assertEqual(windows.values(UNINSTALL_KEY)["InstallLocation"], folder)
        self.assertEqual(windows.values(RUN_KEY)["Wrenlow"], folder + "\\wrenlow.exe")
        self.assertEqual(windows.values(PROXY_KEY)["Enabled"], 1)
        windows.write(PROXY_KEY, "Port", 1080)
        self.uninstall("/SETTINGS")
        self.assertIsNone(windows.values(SETTINGS_KEY))
        wait_until(lambda: not self.home.exists(), "the folder stays")  # it goes last
        self.assertEqual(windows.values(PROXY_KEY)["Enabled"], 1)

    async def reach_out(self):
        hand = await Hand.reach_out(HAND)
        self.addAsyncCleanup(hand.rest)
        return hand

    @staticmethod
    async def turn_page(hand, title, button):
        async def turned():
            return await hand.ask(f"push {title}\t{button}") != "no such button"
        await until(turned, f"{button} in {title!r}")

    async def test_a_question_about_aim_is_answered_before_setup_has_one(self):
        for name, value in (("Enabled", 1), ("Host", "127.0.0.1"), ("Port", Exe.PORT), ("Protocol", "SOCKS4")):
            windows.write(PROXY_KEY, name, value)
        windows.write(SETTINGS_KEY, "revertsettings", "1")
        self.install(OLD)
        self.start()
        service = Service()
        await service.start()
        self.addAsyncCleanup(service.stop)
        hand = await self.reach_out()
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        aim = AimClient(AIM, folder.name, service)
        self.addAsyncCleanup(aim.close, hand)
        await aim.start()
        await aim.does("has started")

        asking = windows.start(self.setup[NEW])
        await self.turn_page(hand, "Wrenlow Setup ", "&Install")
        question = await hand.next_box()
        self.assertTrue(question.text.startswith("Wrenlow will now close AIM"), question)

        async def waits():
            return "Wrenlow asks something. Please answer it." in await hand.ask("read Wrenlow Setup ")
        await until(waits, "setup to wait for the answer")
        self.assertEqual(await hand.boxes(), [question])
        await hand.press(CANCEL)
        await self.turn_page(hand, "Wrenlow Setup ", "&Finish")
        self.assertEqual(await asyncio.to_thread(asking.wait, windows.LONGEST), 0)
        self.assertEqual(windows.values(UNINSTALL_KEY)["DisplayVersion"], NEW)
        await asyncio.to_thread(self.wait_until_listening)

    async def test_a_program_that_does_not_close_is_given_up_in_silence_and_asked_about_otherwise(self):
        self.install(OLD)
        program = self.start()
        self.wait_until_set_up()  # stopped earlier, it would hold up others
        hand = await self.reach_out()

        async def turn_page(*page):
            await self.turn_page(hand, *page)

        async def is_asked(question):
            async def asked():  # a thread that has waited for the program does not tell its box's text at once
                return any(box.text.startswith(question) for box in await hand.boxes())
            await until(asked, question)

        os.kill(program.pid, signal.SIGSTOP)
        self.addCleanup(os.kill, program.pid, signal.SIGCONT)
        silent, asking = windows.start(self.setup[NEW], "/S"), windows.start(self.setup[NEW])
        await turn_page("Wrenlow Setup ", "&Install")
        await is_asked("Wrenlow is still running.")
        self.assertEqual(await asyncio.to_thread(silent.wait, windows.LONGEST), 2)
        self.assertEqual(self.installed(), ["manual/index.html", "manual/old.html", "uninstall.exe", "wrenlow.exe"])
        os.kill(program.pid, signal.SIGCONT)
        await hand.press(RETRY)
        await turn_page("Wrenlow Setup ", "&Finish")
        self.assertEqual(await asyncio.to_thread(asking.wait, windows.LONGEST), 0)
        self.assertEqual(windows.values(UNINSTALL_KEY)["DisplayVersion"], NEW)
        await asyncio.to_thread(self.wait_until_listening)  # the last page has started it

        await asyncio.to_thread(windows.run, self.home / "uninstall.exe")  # hands over, see above
        await turn_page("Wrenlow Uninstall ", "&Uninstall")
        await is_asked("Remove your settings, hotkeys and aliases too?")
        await hand.press(YES)
        await turn_page("Wrenlow Uninstall ", "&Close")
        self.assertFalse(self.home.exists())
        self.assertIsNone(windows.values(SETTINGS_KEY))
        self.assertEqual(windows.values(PROXY_KEY)["Enabled"], 0)

    async def test_works_in_a_folder_with_blanks_and_letters_beyond_the_code_page(self):
        self.home = windows.drive_c() / "Prögrams of Łukasz" / "Wrenlów 2"
        self.addCleanup(shutil.rmtree, self.home.parent, True)
        # Where an earlier version was, the next one goes.
        windows.write(UNINSTALL_KEY, "InstallLocation", windows.windows_path(self.home))
        self.install(NEW)
        self.start()
        self.wait_until_set_up()
        self.uninstall()


if __name__ == "__main__":
    unittest.main()
