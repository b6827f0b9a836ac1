"""The Wrenlow window of wrenlow.exe: what it knows of the AIM client, and what its pages cost while nobody looks."""
import tempfile
from pathlib import Path

from sandbox.client import Client
from sandbox.desk import PROXY, SETTINGS, Wrenlow, registry_set, until
from tests.desk.test_aim_client import Desk

NEXT_PAGE = "17 9"  # Ctrl+Tab


class Window(Desk):
    async def start_listening(self):
        await self.start(setupaim="0")
        await self.wrenlow.wait_until_listening()
        await self.hand.do("open", "open")

    async def says(self, text):
        async def is_said():
            return text in (await self.hand.ask("read Wrenlow")).split("\t")
        await until(is_said, text)

    async def test_before_anybody_has_connected_it_tells_of_the_client(self):
        await self.start_listening()
        await self.says("No client has connected yet. AIM is not running.")
        await self.aim.start()
        await self.aim.signs_on("directly")
        await self.says("No client has connected yet. AIM runs, but it is not set up to use Wrenlow.")
        await registry_set(PROXY, Enabled=1, Host="127.0.0.1", Port=11080, Protocol="SOCKS4")
        await self.says("No client has connected yet, although AIM runs and is set up to use Wrenlow.")

    async def test_letters_that_no_code_page_has_are_typed_found_and_read(self):
        said = "13:05:09 Fred: привет 天気 😀"
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        Path(folder.name, "Fred 2004-05-06.txt").write_bytes("\ufeffFred (13:05:09): привет 天気 😀\r\n".encode())
        await registry_set(SETTINGS, logwhere="Z:" + folder.name.replace("/", "\\"))
        await self.start_listening()
        await self.hand.do(f"keys {NEXT_PAGE}", "pressed")
        await self.hand.do(f"keys {NEXT_PAGE}", "pressed")
        await self.hand.do("keys 9", "pressed")  # to the text that is searched for
        await self.hand.do("type При 天😀", "typed")
        await self.says("1 message")
        await self.hand.do("keys 13", "pressed")
        await self.says(said + "|")

    async def test_traffic_is_kept_while_its_page_is_in_front(self):
        await self.start_listening()
        await self.hand.do(f"keys {NEXT_PAGE}", "pressed")
        await self.says("0 frames kept, 0 shown")
        ada = Client("Ada", (self.service.host, self.service.port), ("127.0.0.1", Wrenlow.PORT))
        self.addAsyncCleanup(ada.close)
        await ada.sign_on(services=())
        await ada.say("Ada", "hello")

        async def are_kept():
            return "0 frames kept, 0 shown" not in (await self.hand.ask("read Wrenlow")).split("\t")
        await until(are_kept, "the frames of the sign-on")
        await self.hand.do("push Wrenlow\tClose", "closed")
        self.assertNotIn("Wrenlow", await self.hand.windows())
        await self.hand.do("open", "open")
