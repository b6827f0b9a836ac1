"""Profiles with their source, as the setting "seehtml" has it."""
from sandbox.wire import tlv
from tests.e2e.support import FeatureTest

PROFILE = '<html><body bgcolor="#ffcc00"><b>me</b> & <i>my</i> naïve page</body></html>'
SOURCE = '<br></body></center><body bgcolor="#ffffff"></font><hr><font face="fixedsys">' + PROFILE.replace("<", "&lt;")


class Profile(FeatureTest):
    async def test_shows_its_source_when_wanted_and_passes_unchanged_otherwise(self):
        ada, tom = self.client("Ada Sample"), self.client("tomsample")
        await ada.sign_on()
        await tom.sign_on()
        await tom.set_profile(PROFILE)
        await self.service.received("tomsample", 2, 4)
        head = self.service.user("tomsample").info() + tlv(1, b'text/aolrtf; charset="us-ascii"')
        for setting, shown in (("0", PROFILE), ("1", PROFILE + SOURCE)):
            with self.subTest(seehtml=setting):
                self.settings(seehtml=setting)
                answer = await ada.bos.ask(2, 0x15, b"\0\0\0\1\x09tomsample", 6)
                self.assertEqual(answer, head + tlv(2, shown.encode("latin-1")))
