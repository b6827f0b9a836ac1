"""Command dialogs of wrenlow.exe from the tray's menu to the service, while a conversation goes on. What each dialog does by
itself, the dialog suites test on the same windows (tests/win32)."""
from sandbox.client import Client
from sandbox.desk import Wrenlow, until
from sandbox.wire import tlv
from tests.desk.test_aim_client import Desk

ADA, BOB = "Ada Sample", "Bob Sample"
CHARSET = b'text/aolrtf; charset="us-ascii"'

# Where the tray menu has them, as keys.
SET_AWAY, BACK = "DDDDRE", "DDDDRDE"


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

    async def arrive(self, *commands):
        """These are all that arrive, in each name's session."""
        await until(lambda: all(len(self.commands(name)) >= len(commands) for name in (ADA, BOB)), "the commands")
        for client in self.clients:  # whatever was sent before this has arrived when it has
            await client.say(client.name, "the end of the commands")
        for name in (ADA, BOB):
            sent = [command for command in self.commands(name) if command[:2] != (4, 6)]
            self.assertEqual(sent, list(commands), name)

    async def test_everybody_goes_away_and_comes_back(self):
        await self.open(SET_AWAY, "Set Away Message")
        await self.hand.do("fill Set Away Message\t0\tOut at the lake", "filled")
        await self.hand.do("push Set Away Message\tAway!", "closed")
        await self.open(BACK, "Remove Away Message")
        await self.hand.do("push Remove Away Message\tBack!", "closed")
        away, back = (tlv(3, CHARSET) + tlv(4, text) for text in (b"Out at the lake", b""))
        await self.arrive((2, 4, away), (2, 4, back))
