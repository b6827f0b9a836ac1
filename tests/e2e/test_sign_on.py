"""Sign-ons and conversations, as real clients and servers have them."""
import asyncio

from sandbox import wire
from tests.e2e.support import RelayTest, within

PIECE = 0.003  # seconds between the pieces of a header, so that each arrives by itself


class SignOn(RelayTest):
    async def test_works_when_the_server_writes_its_headers_field_by_field(self):
        service = await self.new_service(pause=PIECE)
        ada = self.client("Ada Lovelace", service)
        await ada.sign_on()
        self.assertEqual(ada.display_name, "Ada Lovelace")
        kinds = sorted(event.connection for event in service.events.items if event.text == "SNAC(01,06) asks for the rate limits")
        self.assertEqual(kinds, ["bos", "service 0D", "service 10"])

    async def test_several_clients_sign_on_at_once_and_all_hear_each_other_in_order(self):
        service = await self.new_service(pause=PIECE / 3)
        clients = [self.client(f"Client {number}", service) for number in range(6)]
        await asyncio.gather(*(client.sign_on() for client in clients))

        async def speak(speaker):
            for number in range(5):
                for listener in clients:
                    if listener is not speaker:
                        await speaker.say(listener.name, f"{speaker.name} says {number}")
        await within(asyncio.gather(*map(speak, clients)))

        for listener in clients:
            heard = [await listener.hear() for _ in range(5 * (len(clients) - 1))]
            for speaker in clients:
                if speaker is not listener:
                    self.assertEqual([text for name, text in heard if name == speaker.name],
                                     [f"{speaker.name} says {number}" for number in range(5)])

    async def test_sequence_numbers_wrap_on_both_sides(self):
        service = await self.new_service(first_seq=0xFFFA)
        ada = self.client("Ada", service, first_seq=0xFFFB)
        await ada.sign_on()
        for number in range(10):
            await ada.say("ada", f"to myself {number}")
            self.assertEqual(await ada.hear(), ("Ada", f"to myself {number}"))

    async def test_texts_arrive_as_they_were_written(self):
        ada, tom = self.client("Ada"), self.client("tom")
        await ada.sign_on(buddies=["Tom"])
        await tom.sign_on()
        await ada.sees("tom")
        for text in ("plain", "<b>markup</b> & such", "naïve ✓ Ω", " ", "\r\n", "*" * 7000):
            await ada.say("t O m", text)
            self.assertEqual(await tom.hear(), ("Ada", text))
        await tom.say("Ada", "I am not here", automatic=True)
        self.assertEqual(await ada.hear(), ("tom", "I am not here"))

    async def test_profile_away_and_idle_reach_the_server_and_come_back(self):
        ada, tom = self.client("Ada"), self.client("tom")
        await ada.sign_on()
        await tom.sign_on()
        await tom.set_profile("<b>about me</b>")
        await tom.set_away("back soon")
        await tom.set_idle(600)
        await self.service.received("tom", 1, 0x11)
        self.assertEqual(self.service.user("tom").idle, 600)
        self.assertEqual(await ada.profile_of("tom"), "<b>about me</b>")
        self.assertEqual(await ada.away_message_of("tom"), "back soon")

    async def test_the_longest_frames_pass_in_both_directions(self):
        ada = self.client("Ada")
        await ada.sign_on()
        longest = "x" * 65_300  # with everything around it the answer is just below 65,535 bytes
        await ada.set_profile(longest)
        self.assertEqual(await ada.profile_of("ada"), longest)

    async def test_keep_alive_frames_pass_on_every_connection(self):
        ada = self.client("Ada")
        await ada.sign_on()
        await ada.keep_alive()
        for connection in ("bos", "service 0D", "service 10"):
            await self.service.events.find(lambda event: event.connection == connection and event.frame
                                           and event.frame.channel == wire.KEEP_ALIVE)

    async def test_whoever_signs_on_elsewhere_gets_the_servers_goodbye(self):
        first, second = self.client("Ada"), self.client("ada")
        await first.sign_on()
        await second.sign_on()
        goodbye = await first.bos.frames.take(lambda frame: frame.channel == wire.SIGN_OFF)
        self.assertIn(9, wire.parse_tlvs(goodbye.payload))
        await first.bos.ended()
        await second.say("Ada", "still here")
        self.assertEqual(await second.hear(), ("ada", "still here"))

    async def test_the_server_sees_a_client_go(self):
        ada, tom = self.client("Ada"), self.client("tom")
        await ada.sign_on(buddies=["tom"])
        await tom.sign_on()
        await tom.close()  # without a goodbye
        await ada.bos.frames.take(lambda frame: frame.snac == (3, 0xC))
