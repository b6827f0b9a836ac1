"""Aliases, put on and taken off on the way. The service ends a connection whose lengths disagree; that fails a test."""
from tests.e2e import support
from tests.e2e.support import FeatureTest

FRED = b"tomsample\r\nFred\r\n"


class Aliases(FeatureTest):
    async def tom_and_ada(self):
        """Tom, whose connections know no alias, and Ada, who calls him Fred."""
        tom, ada = self.client("tomsample"), self.client("Ada Sample")
        await tom.sign_on()
        self.aliases(FRED)
        await ada.sign_on(buddies=["Fred"])
        return tom, ada

    async def talk(self, tom, ada, alias="Fred"):
        """A message each way, Tom being known by the alias."""
        await ada.say(alias, "for " + alias)
        self.assertEqual(await tom.hear(), (ada.name, "for " + alias))
        await tom.say(ada.name, "from Tom")
        self.assertEqual(await ada.hear(), (alias, "from Tom"))

    async def test_the_client_sees_the_alias_and_the_server_the_name(self):
        tom, ada = await self.tom_and_ada()
        added = await self.service.received("Ada Sample", 3, 4)
        self.assertEqual(added.data, b"\x09tomsample")
        arrived = await ada.bos.take(3, 0xB)
        self.assertEqual(arrived.data, b"\x04Fred" + self.service.user("tomsample").info()[10:])
        await self.talk(tom, ada)
        sent = await self.service.received("Ada Sample", 4, 6)
        self.assertEqual(sent.data[10:20], b"\x09tomsample")
        await tom.set_profile("only Tom")
        await tom.say("tomsample", "to myself")  # the profile has arrived
        self.assertEqual(await tom.hear(), ("tomsample", "to myself"))
        self.assertEqual(await ada.profile_of("fRED"), "only Tom")

    async def test_natively_an_alias_enters_the_stream_as_utf8_whatever_the_file_is_in(self):
        if support.target.name == "exe":
            self.skipTest("there it is in the code page, as the file")
        tom = self.client("tomsample")
        await tom.sign_on()
        for name, encoding in (("Ada Sample", "utf-8"), ("Eve", "cp1252")):
            self.aliases("tomsample\r\nFr\u00e9d \u20ac\r\n".encode(encoding))
            client = self.client(name)
            await client.sign_on(buddies=["tomsample"])
            arrived = await client.bos.take(3, 0xB)
            self.assertTrue(arrived.data.startswith("\x09Fr\u00e9d \u20ac".encode()), arrived.data)

    async def test_a_running_connection_keeps_its_list_whatever_happens_to_the_file(self):
        tom, ada = await self.tom_and_ada()
        self.aliases(b"tomsample\r\nThomas\r\n")
        eve = self.client("Eve")
        await eve.sign_on()
        await self.talk(tom, eve, "Thomas")
        await self.talk(tom, ada)
        self.aliases(None)
        await self.talk(tom, ada)
