"""wrenlow.exe at its start, at work behind an open box, and at the end of the session; its hold on AIM's windows."""
import asyncio
import socket

from sandbox.client import Client
from sandbox.desk import OK, SETTINGS, Wrenlow, registry_set, until
from tests.desk.test_aim_client import Desk

ABOUT = "menu UUE"  # the last entry but one
OPEN_MENU = "menu U"
ESCAPE = 27
OPAQUE, HALF = "no layer", "128"


class Program(Desk):
    async def start_listening(self):
        await self.start(setupaim="0")
        await self.wrenlow.wait_until_listening()

    async def client(self, name):
        client = Client(name, (self.service.host, self.service.port), ("127.0.0.1", Wrenlow.PORT))
        self.addAsyncCleanup(client.close)
        await client.sign_on(services=())
        return client

    async def opens_about(self):
        await self.hand.do(ABOUT, "chosen")
        self.assertEqual((await self.hand.next_box()).title, "About Wrenlow")

    async def opens_menu(self):
        await self.hand.do(OPEN_MENU, "open")

    async def test_a_port_that_is_taken_is_told_and_the_tray_stays(self):
        with socket.create_server(("127.0.0.1", Wrenlow.PORT)):
            await self.start(setupaim="0")
            await self.shows("Wrenlow")
            told = await self.hand.ask("read Wrenlow")
            self.assertIn("Wrenlow generated the folloing error\t10048: ", told)
            self.assertIn("|at: modSocket:WinsockStartListen: 0\t", told)
            await self.opens_about()
            self.assertEqual(await self.hand.ask("read Wrenlow"), told)
            await self.hand.press(OK)
            await self.hand.do("push Wrenlow\tOK", "closed")
            self.assertFalse(self.wrenlow.has_ended())

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
        await self.start_listening()

        async def becomes(alpha):
            async def is_so():
                return await self.hand.ask("alpha fred - Instant Message") == alpha
            await until(is_so, f"{alpha} of the message window")
        await becomes(HALF)
        for title in ("Buddy Info: fred", "Chat Room: Wrens"):
            self.assertEqual(await self.hand.ask(f"alpha {title}"), OPAQUE)
        await self.hand.do("menu UUUUE", "chosen")
        await self.shows("Settings")
        await self.hand.do("push Settings\tInstant Messages", "checked")
        await self.hand.do("push Settings\tOK", "closed")
        await becomes(OPAQUE)
