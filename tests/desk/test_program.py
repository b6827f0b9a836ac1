"""wrenlow.exe at its start, at work behind an open box, and at the end of the session; its hold on AIM's windows."""
import asyncio
import shutil
import socket
import tempfile
from pathlib import Path

from sandbox.desk import OK, PROXY, SETTINGS, Box, Wrenlow, registry_set, registry_values, until
from sandbox.program import of_windows, run_in_wine
from sandbox.wire import parse_tlvs
from tests.desk.test_aim_client import Desk

ABOUT = "menu UUE"  # the last entry but one
OPEN_MENU = "menu U"
ESCAPE = 27
RUNS_ALREADY = Box("Wrenlow", "Wrenlow is running already. Its icon is in the notification area.", [OK])
EDIT_PROFILE = "menu DDDE"
VOLATILE = r"HKEY_CURRENT_USER\Volatile Environment"
RUN = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Run"
OPAQUE, HALF = "no layer", "128"
# As they are stored, and the keys as virtual-key codes.
HOTKEYS = [("Ctrl+Shift+F8", "Set Away", "Gone to the sea", "17 16 119"), ("Ctrl+Alt+K", "Clear Away", " ", "17 18 75"),
           ("Ctrl+Shift+F9", "Panic!", " ", "17 16 120")]


class Program(Desk):
    async def start_listening(self):
        await self.start(setupaim="0")
        await self.wrenlow.wait_until_listening()

    async def opens_about(self):
        await self.hand.do(ABOUT, "chosen")
        self.assertEqual((await self.hand.next_box()).title, "About Wrenlow")

    async def opens_menu(self):
        await self.hand.do(OPEN_MENU, "open")

    async def test_a_port_that_is_taken_is_tried_again_until_it_is_free(self):
        with socket.create_server(("127.0.0.1", Wrenlow.PORT)):
            await self.start(setupaim="0")

            async def has_an_icon():
                return await self.hand.ask(ABOUT) == "chosen"
            await until(has_an_icon, "the icon's menu")
            await self.hand.next_box()
            await self.hand.press(OK)
            self.assertNotIn("Wrenlow", await self.hand.windows())  # no error window yet
        await self.relays()

    async def test_a_second_start_says_so_and_touches_nothing(self):
        await self.start_listening()
        await self.accompany()
        for checks_for_update in (True, False):
            second = Wrenlow(self.build / self.PROGRAM)
            await second.start(checks_for_update)
            if checks_for_update:
                await self.answers((RUNS_ALREADY, OK))
            self.assertEqual(await second.end(), 0)
            await self.undisturbed()
        await self.opens_about()
        await self.hand.press(OK)

    async def test_clients_come_talk_and_go_while_a_box_is_open(self):
        await self.start_listening()
        early = await self.client("early")
        await self.opens_about()
        for number in range(10):
            passing = await self.client(f"passing {number}")
            await passing.say("early", f"hello {number}")
            self.assertEqual(await early.hear(), (passing.name, f"hello {number}"))
            await passing.sign_off()
        late = await self.client("late")
        await self.hand.press(OK)
        await late.say("early", "still there?")
        self.assertEqual(await early.hear(), ("late", "still there?"))
        self.assertEqual(early.faults + late.faults, [])

    async def test_the_end_of_the_session_does_everything_behind_an_open_box_or_menu(self):
        for opens, closes_by_itself in ((self.opens_about, True), (self.opens_menu, False)):
            with self.subTest(opens.__name__):
                await self.start_listening()
                await self.accompany()
                ada = await self.client("Ada")
                await opens()
                await asyncio.to_thread(self.bystander.expect_end)
                await self.hand.do("end session", "ended")
                await asyncio.to_thread(self.bystander.see_the_end)
                await ada.bos.ended()
                self.assertEqual(await self.hand.ask("tray C"), "no tray icon")
                if not closes_by_itself:  # Wine's menus do not hear that the program wants to end
                    await self.hand.do(f"keys {ESCAPE}", "pressed")
                self.assertEqual(await self.wrenlow.end(), 0)

    async def set_appdata(self, folder):
        """As Windows does at the sign-on of a user; what is handed to reg in a file may have any letters."""
        with tempfile.NamedTemporaryFile(suffix=".reg") as file:
            value = folder.replace("\\", "\\\\")
            text = f'Windows Registry Editor Version 5.00\r\n\r\n[{VOLATILE}]\r\n"APPDATA"="{value}"\r\n'
            file.write(text.encode("utf-16"))
            file.flush()
            await asyncio.to_thread(run_in_wine, of_windows("reg"), "import", "Z:" + file.name)

    async def test_a_folder_that_the_code_page_cannot_name(self):
        """Of a user who is called so: the program starts there, finds its aliases and AIM's files, logs, and Windows is told
        where it is."""
        above, logs = self.folder(), self.folder()
        home = Path(above, "\u0141ukasz \u041f\u0440\u0438\u0432\u0435\u0442")
        home.mkdir()
        self.wrenlow = Wrenlow(shutil.copy(self.build / self.PROGRAM, home))
        self.addAsyncCleanup(self.wrenlow.close)
        await registry_set(SETTINGS, setupaim="0", onstartup="1", logims="1", logwhere="Z:" + logs.replace("/", "\\"))
        data = home / "AppData"
        (data / "Aim/tomsample").mkdir(parents=True)
        before = (await registry_values(VOLATILE))["APPDATA"][1]
        self.addAsyncCleanup(self.set_appdata, before)
        await self.set_appdata("Z:" + str(data).replace("/", "\\"))
        await self.wrenlow.start()
        await self.wrenlow.wait_until_listening()
        tom = await self.client("tomsample")
        (home / "repl.dat").write_bytes(b"tomsample\r\nFred\r\n")
        ada = await self.client("Ada")
        await tom.say("Ada", "hello")
        self.assertEqual(await ada.hear(), ("Fred", "hello"))
        self.assertEqual({path.name for path in home.iterdir()},
                         {"AppData", "wrenlow.exe", "repl.dat", "localdata.txt", "remotedata.txt"})
        self.assertEqual({path.name.split()[0] for path in Path(logs).iterdir()}, {"Ada", "Fred"})
        await self.hand.do(EDIT_PROFILE, "chosen")
        await self.shows("Edit Profile")
        await self.hand.do("select Edit Profile\t0\t1", "selected")
        await self.hand.do("fill Edit Profile\t0\t<b>Birds</b>", "filled")
        await self.hand.do("push Edit Profile\tSave", "closed")
        self.assertEqual((data / "Aim/tomsample/info.htm").read_bytes(), b"<b>Birds</b>\r\n")
        # What reg tells is in a code page, but what it exports is not.
        await asyncio.to_thread(run_in_wine, of_windows("reg"), "export", RUN, "Z:" + above + "/run.reg", "/y")
        program = "Z:" + str(home / "wrenlow.exe").replace("/", "\\")
        self.assertIn('"Wrenlow"="%s"' % program.replace("\\", "\\\\"),
                      Path(above, "run.reg").read_text(encoding="utf-16"))

    async def test_a_taskbar_that_is_restarted_again_and_again_disturbs_nobody(self):
        await self.start_listening()
        await self.accompany()
        for _ in range(20):
            await self.hand.do("new taskbar", "heard")
            await self.undisturbed()
        await self.opens_about()  # the icon is in use
        await self.undisturbed()
        await self.hand.press(OK)

    async def test_only_the_chosen_kind_of_window_is_translucent_until_it_is_switched_off(self):
        await self.aim.start()
        await self.aim.signs_on("directly")
        await registry_set(SETTINGS, trans1="1", trans2="0", trans3="0", trans4="0", transamount="50")
        self.aim.freeze()
        self.addCleanup(self.aim.thaw)
        await self.start_listening()
        await self.relays()  # while the windows hang

        async def becomes(alpha):
            async def is_so():
                return await self.hand.ask("alpha fred - Instant Message") == alpha
            await until(is_so, f"{alpha} of the message window")
        self.aim.thaw()
        await becomes(HALF)
        for title in ("Buddy Info: fred", "Chat Room: Wrens"):
            self.assertEqual(await self.hand.ask(f"alpha {title}"), OPAQUE)
        await self.hand.do("menu UUUUE", "chosen")
        await self.shows("Settings")
        await self.hand.do("push Settings\tInstant Messages", "checked")
        await self.hand.do("push Settings\tOK", "closed")
        await becomes(OPAQUE)

    async def test_before_anybody_has_connected_the_window_tells_of_the_client(self):
        async def says(text):
            async def is_said():
                return "No client has connected yet" + text in (await self.hand.ask("read Wrenlow")).split("\t")
            await until(is_said, text)
        await self.start_listening()
        await self.hand.do("open", "open")
        await says(". AIM is not running.")
        await self.aim.start()
        await self.aim.signs_on("directly")
        await says(". AIM runs, but it is not set up to use Wrenlow.")
        await registry_set(PROXY, Enabled=1, Host="127.0.0.1", Port=11080, Protocol="SOCKS4")
        await says(", although AIM runs and is set up to use Wrenlow.")

    async def test_hotkeys_set_and_clear_the_away_message_and_end_aim_and_the_program(self):
        stored = {"n": "2000000000"}  # a damaged list counts as far as it goes
        for number, (combination, action, text, _) in enumerate(HOTKEYS, 1):
            stored |= {f"{number}n": combination, f"{number}nt": action, f"{number}na": text}
        await registry_set(SETTINGS, enablehotkey="1")
        await registry_set(SETTINGS + r"\hotkeys", **stored)
        set_away, clear_away, panic = (codes for *_, codes in HOTKEYS)
        await self.start_set_up()
        await self.client("Ada")
        await self.hand.do(f"keys {set_away}", "pressed")
        sent = await self.service.received("Ada", 2, 4)
        self.assertEqual(parse_tlvs(sent.data)[4], b"Gone to the sea")
        await self.hand.do(f"keys {clear_away}", "pressed")
        await until(lambda: not self.service.user("Ada").away, "the way back")
        await self.hand.do(f"keys {panic}", "pressed")
        self.assertEqual(await self.wrenlow.end(), 0)
        await self.aim.was_ended()
