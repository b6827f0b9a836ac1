"""The command dialogs of wrenlow.exe, opened from the tray: what arrives at the service, byte for byte, for everybody
signed on and for one of two. A conversation goes on meanwhile."""
import struct

from sandbox.client import Client
from sandbox.desk import Wrenlow, until
from sandbox.wire import tlv
from tests.desk.test_aim_client import Desk

ADA, BOB = "Ada Sample", "Bob Sample"
CHARSET = b'text/aolrtf; charset="us-ascii"'
ALL, FIRST = 0, 1  # entries of the screen names' list

# Where the tray menu has them, as keys.
EDIT_PROFILE, SET_AWAY, BACK, SET_IDLE, REMOVE_IDLE = "DDE", "DDDRE", "DDDRDE", "DDDDRE", "DDDDRDE"


class Dialogs(Desk):
    async def asyncSetUp(self):
        await super().asyncSetUp()
        await self.start(setupaim="0")
        await self.accompany()
        self.clients = []
        for name in (ADA, BOB):
            client = Client(name, (self.service.host, self.service.port), ("127.0.0.1", Wrenlow.PORT))
            self.addAsyncCleanup(client.close)
            await client.sign_on(services=())
            await client.say(name, "the sign-on is over")  # and whatever was sent before this has arrived
            self.clients.append(client)
        self.ignored = len(self.service.events.items)

    async def asyncTearDown(self):
        await self.undisturbed()
        await super().asyncTearDown()

    async def open(self, keys, title):
        await self.hand.do(f"menu {keys}", "chosen")
        await self.shows(title)

    def commands(self, name):
        """The frames that have come in this name's session since the sign-on, as (family, subtype, data)."""
        return [(*event.frame.snac, event.frame.data) for event in self.service.events.items[self.ignored:]
                if event.kind == "received" and event.name == name]

    async def arrive(self, *commands, at):
        """These are all that arrive, and only in these names' sessions."""
        await until(lambda: all(len(self.commands(name)) >= len(commands) for name in at), "the commands")
        for client in self.clients:  # whatever was sent before this has arrived when it has
            await client.say(client.name, "the end of the commands")
        for name in (ADA, BOB):
            sent = [command for command in self.commands(name) if command[:2] != (4, 6)]
            self.assertEqual(sent, list(commands) if name in at else [], name)

    async def test_everybody_goes_away_and_comes_back(self):
        await self.open(SET_AWAY, "Set Away Message")
        await self.hand.do("fill Set Away Message\t0\tOut at the lake", "filled")
        await self.hand.do("push Set Away Message\tAway!", "closed")
        await self.open(BACK, "Remove Away Message")
        await self.hand.do("push Remove Away Message\tBack!", "closed")
        away, back = (tlv(3, CHARSET) + tlv(4, text) for text in (b"Out at the lake", b""))
        await self.arrive((2, 4, away), (2, 4, back), at=(ADA, BOB))

    async def test_one_of_two_goes_idle_and_comes_back(self):
        await self.open(SET_IDLE, "Set Idle Time")
        await self.hand.do(f"select Set Idle Time\t0\t{FIRST}", "selected")
        await self.hand.do("fill Set Idle Time\t0\t65536", "filled")
        await self.hand.do("push Set Idle Time\tIdle", "open")
        self.assertEqual((await self.hand.next_box()).text, "Enter a number between 0 and 65535 inclusive.")
        await self.undisturbed()
        await self.hand.press(1)
        await self.hand.do("fill Set Idle Time\t0\t45", "filled")
        await self.hand.do("push Set Idle Time\tIdle", "closed")
        await self.open(REMOVE_IDLE, "Unidle")
        await self.hand.do(f"select Unidle\t0\t{FIRST}", "selected")
        await self.hand.do("push Unidle\tBack!", "closed")
        await self.arrive((1, 0x11, struct.pack(">I", 45 * 60)), (1, 0x11, bytes(4)), at=(ADA,))

    async def test_everybody_gets_a_profile(self):
        await self.open(EDIT_PROFILE, "Edit Profile")
        await self.hand.do("fill Edit Profile\t0\t<b>Birds</b>", "filled")
        await self.hand.do("push Edit Profile\tSave", "closed")
        await self.arrive((2, 4, tlv(1, CHARSET) + tlv(2, b"<b>Birds</b>")), at=(ADA, BOB))

    async def test_cancel_sends_nothing(self):
        for keys, title in ((SET_AWAY, "Set Away Message"), (EDIT_PROFILE, "Edit Profile"), (SET_IDLE, "Set Idle Time")):
            await self.open(keys, title)
            await self.hand.do(f"push {title}\tCancel", "closed")
        await self.arrive(at=())
