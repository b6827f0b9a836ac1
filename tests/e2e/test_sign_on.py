"""Sign-ons, as real clients and servers have them."""
from tests.e2e.support import RelayTest

PIECE = 0.003  # seconds between the pieces of a header, so that each arrives by itself


class SignOn(RelayTest):
    async def test_works_when_the_server_writes_its_headers_field_by_field(self):
        service = await self.new_service(pause=PIECE)
        ada = self.client("Ada Lovelace", service)
        await ada.sign_on()
        self.assertEqual(ada.display_name, "Ada Lovelace")
        kinds = sorted(event.connection for event in service.events.items if event.text == "SNAC(01,06) asks for the rate limits")
        self.assertEqual(kinds, ["bos", "service 0D", "service 10"])

    async def test_sequence_numbers_wrap_on_both_sides(self):
        service = await self.new_service(first_seq=0xFFFA)
        ada = self.client("Ada", service, first_seq=0xFFFB)
        await ada.sign_on()
        for number in range(10):
            await ada.say("ada", f"to myself {number}")
            self.assertEqual(await ada.hear(), ("Ada", f"to myself {number}"))

    async def test_the_longest_frames_pass_in_both_directions(self):
        ada = self.client("Ada")
        await ada.sign_on()
        longest = "x" * 65_300  # with everything around it the answer is just below 65,535 bytes
        await ada.set_profile(longest)
        self.assertEqual(await ada.profile_of("ada"), longest)

