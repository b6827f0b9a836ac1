"""Control of the AIM client: what the user is asked, what is written, and which processes end and start."""
import asyncio
import tempfile

from sandbox.client import Client
from sandbox.desk import (CANCEL, OK, PROXY, SCREEN_NAME, SETTINGS, AimClient, Box, Hand, Wrenlow, registry_forget,
                          registry_set, registry_values, until)
from sandbox.program import end_wine
from sandbox.service import Service
from tests.e2e.measure import describe
from tests.e2e.target import Bystander
from tests.report import BoundedTest

FINAL_SETUP = Box("Final Setup", "Wrenlow will now change AIM's connection preferences", [OK, CANCEL])
WILL_CLOSE = Box("Wrenlow", "Wrenlow will now close AIM to finish changing the connection settings.", [OK, CANCEL])
OPEN_AIM = Box("Wrenlow", "Press OK to open AIM.", [OK])

SET_UP = {"Enabled": ("REG_DWORD", "0x1"), "Host": ("REG_SZ", "127.0.0.1"), "Port": ("REG_DWORD", "0x2b48"),
          "Protocol": ("REG_SZ", "SOCKS4")}
REVERTED = SET_UP | {"Enabled": ("REG_DWORD", "0x0")}
THROUGH_US = "through 127.0.0.1:11080"
TITLES = {f"{SCREEN_NAME}'s Buddy List Window", "fred - Instant Message", "Buddy Info: fred", "Chat Room: Wrens"}


class Desk(BoundedTest):
    """A desk with a service, an AIM client that is not started yet, and settings that change nothing by themselves."""
    LONGEST = 180
    PROGRAM = "app/shell/wrenlow.exe"
    build = None    # set by the runner
    wrenlow = None  # from each test's beginning

    async def asyncSetUp(self):
        self.service = Service()
        await self.service.start()
        self.addAsyncCleanup(self.service.stop)
        folder = tempfile.TemporaryDirectory(prefix="America Online Łukasz ")  # blanks and what no code page has with them
        self.addCleanup(folder.cleanup)
        self.hand = await Hand.reach_out(self.build / "sandbox/hand/hand.exe")
        self.addAsyncCleanup(self.hand.rest)
        self.aim = AimClient(self.build / "sandbox/aim/aim.exe", folder.name, self.service)
        self.addAsyncCleanup(self.aim.close, self.hand)
        self.wrenlow = Wrenlow(self.build / self.PROGRAM)
        self.addAsyncCleanup(self.wrenlow.close)
        await registry_forget(PROXY)
        await registry_forget(SETTINGS)

    async def asyncTearDown(self):
        self.assertEqual(await self.hand.boxes(), [])
        self.assertEqual([fault.text for fault in self.service.faults], [])

    def state(self):
        if not self.wrenlow:
            return "there was no program yet"
        more = describe(self.wrenlow.pid, Wrenlow.PORT) if self.wrenlow.pid else []
        return "\n".join([self.wrenlow.state(), *more])

    def discard(self):
        """The next test begins with a Wine of its own, whatever has become of this one's."""
        end_wine()

    async def start(self, setupaim="1", revertsettings="0", **options):
        await registry_set(SETTINGS, setupaim=setupaim, revertsettings=revertsettings, onstartup="0")
        await self.wrenlow.start(**options)

    async def accompany(self):
        """Begins a conversation through it that nothing may disturb."""
        await self.wrenlow.wait_until_listening()
        self.bystander = await asyncio.to_thread(Bystander, Wrenlow.PORT)
        self.addCleanup(self.bystander.kill)

    async def undisturbed(self):
        await asyncio.to_thread(self.bystander.how_it_goes)

    async def shows(self, title):
        async def shown():
            return title in await self.hand.windows()
        await until(shown, title)

    async def start_set_up(self, **settings):
        """Both programs run, the client signed on through Wrenlow; gives the client's process."""
        await registry_set(PROXY, Enabled=1, Host="127.0.0.1", Port=11080, Protocol="SOCKS4")
        await self.start(**settings)
        await self.wrenlow.wait_until_listening()
        await self.aim.start()
        return await self.aim.signs_on(THROUGH_US)

    async def answers(self, *boxes):
        """The boxes that open one after the other, as pairs of what is expected and the button to press."""
        for expected, button in boxes:
            self.assertEqual(await self.hand.next_box(), expected)
            await self.hand.press(button)

    async def relays(self):
        """Wrenlow has come as far as to serve clients, without a question."""
        await self.wrenlow.wait_until_listening()
        client = await self.client("passing")
        await client.sign_off()
        self.assertEqual(await self.hand.boxes(), [])

    async def client(self, name):
        """Signed on through Wrenlow."""
        client = Client(name, (self.service.host, self.service.port), ("127.0.0.1", Wrenlow.PORT))
        self.addAsyncCleanup(client.close)
        await client.sign_on(services=())
        return client

    async def assert_stored(self, expected):
        self.assertEqual(await registry_values(PROXY), expected)

    def put_bag(self, mode):
        self.aim.bag.parent.mkdir(parents=True, exist_ok=True)
        self.aim.bag.write_bytes(b"cached")
        self.aim.bag.chmod(mode)

    def bag_is_gone(self):
        return not self.aim.bag.exists()


class SetUp(Desk):
    async def test_a_running_client_is_ended_and_comes_back_through_us(self):
        await self.aim.start()
        before = await self.aim.signs_on("directly")
        await self.start()
        self.assertEqual(await self.hand.next_box(), FINAL_SETUP)
        await self.assert_stored(SET_UP)  # before anything is asked
        await self.answers((FINAL_SETUP, OK), (WILL_CLOSE, OK))
        self.assertEqual(await self.hand.next_box(), OPEN_AIM)
        self.assertEqual(await self.aim.was_ended(), 0)
        await self.hand.press(OK)
        self.assertNotEqual(await self.aim.signs_on(THROUGH_US), before)
        async def shown_minimized():
            return {f"_{title}" for title in TITLES} <= set(await self.hand.windows())
        await until(shown_minimized, "the client's windows, minimized")

    async def test_cancel_at_the_first_box_spares_the_client_and_leaves_the_values_written(self):
        await self.stays_as_it_is(SET_UP, (FINAL_SETUP, CANCEL))

    async def test_cancel_at_the_second_box_spares_the_client(self):
        await self.stays_as_it_is(SET_UP, (FINAL_SETUP, OK), (WILL_CLOSE, CANCEL))

    async def test_nothing_is_set_up_when_the_user_does_not_want_it(self):
        await self.stays_as_it_is({}, setupaim="0")

    async def test_a_client_that_is_set_up_already_is_left_alone(self):
        # A port in digits reads the same; writing would make it a number.
        ours = {"Enabled": 1, "Host": "127.0.0.1", "Port": "11080", "Protocol": "SOCKS4"}
        await self.stays_as_it_is(SET_UP | {"Port": ("REG_SZ", "11080")}, proxy=ours)

    async def stays_as_it_is(self, stored, *boxes, proxy=(), **settings):
        """The client runs and does nothing but sign on, once, whatever is asked and stored meanwhile."""
        await self.aim.start()
        await self.aim.signs_on("directly")
        await registry_set(PROXY, **dict(proxy))
        await self.start(**settings)
        await self.answers(*boxes)
        await self.relays()
        await self.assert_stored(stored)
        self.assertEqual([line for _, line in self.aim.log()],
                         ["has started", "signs on directly", f"is signed on as {SCREEN_NAME}"])

    async def test_the_first_start_ever_sets_up_a_client_that_does_not_run_without_a_word(self):
        await self.wrenlow.start()
        await self.relays()
        await self.assert_stored(SET_UP)
        self.assertEqual((await registry_values(SETTINGS))["setupaim"], ("REG_SZ", "1"))
        await self.aim.start()
        await self.aim.signs_on(THROUGH_US)


class End(Desk):
    async def test_close_in_the_tray_gives_the_client_its_connection_back(self):
        before = await self.start_set_up(revertsettings="1")
        await self.hand.do("tray C", "chosen")
        await self.answers((WILL_CLOSE, OK), (OPEN_AIM, OK))
        self.assertEqual(await self.wrenlow.end(), 0)
        self.assertEqual(await self.hand.ask("tray C"), "no tray icon")
        await self.assert_stored(REVERTED)
        self.assertNotEqual(await self.aim.signs_on("directly"), before)

    async def test_cancel_keeps_the_client_whose_connections_are_closed_already(self):
        process = await self.start_set_up(revertsettings="1")
        await self.hand.do("tray C", "chosen")
        self.assertEqual(await self.hand.next_box(), WILL_CLOSE)
        self.assertEqual(await self.aim.does("has lost its connection"), process)
        await self.hand.press(CANCEL)
        self.assertEqual(await self.wrenlow.end(), 0)
        await self.assert_stored(REVERTED)
        await self.aim.close(self.hand)
        self.assertEqual(await self.aim.does("has ended"), process)

    async def test_nothing_is_given_back_when_the_user_does_not_want_it(self):
        process = await self.start_set_up(revertsettings="0")
        await self.hand.do("tray C", "chosen")
        self.assertEqual(await self.wrenlow.end(), 0)
        await self.assert_stored(SET_UP)
        self.assertEqual(await self.aim.does("has lost its connection"), process)

    async def test_the_end_of_the_session_asks_nothing_and_starts_nothing(self):
        process = await self.start_set_up(revertsettings="1")
        self.put_bag(0o644)
        await self.hand.do("end session", "ended")
        await self.assert_stored(REVERTED)
        self.assertTrue(self.bag_is_gone())
        self.assertEqual(await self.hand.boxes(), [])
        self.assertEqual(await self.wrenlow.end(), 0)
        self.assertEqual(await self.aim.does("has lost its connection"), process)
        await self.aim.close(self.hand)
        self.assertEqual(await self.aim.does("has ended"), process)

    async def test_cached_user_information_goes_at_the_sign_on_and_at_the_close_though_it_is_read_only(self):
        for mode in (0o444, 0o644):
            with self.subTest(mode=oct(mode)):
                self.put_bag(mode)
                await self.start_set_up()
                await until(self.bag_is_gone, "its deletion at the sign-on")
                self.put_bag(mode)
                await self.hand.do("tray C", "chosen")
                self.assertEqual(await self.wrenlow.end(), 0)
                self.assertTrue(self.bag_is_gone())
                await self.aim.close(self.hand)
                await self.aim.does("has ended")
