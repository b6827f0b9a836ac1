"""Sign-ons and conversations, as real clients and servers have them; and any stream of frames between two."""
import asyncio
import random

from sandbox.wire import DATA, KEEP_ALIVE
from tests.e2e.support import RelayTest, frame, within

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
        await asyncio.gather(*map(speak, clients))  # each answer has its bound

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

    async def test_the_longest_frames_pass_in_both_directions(self):
        ada = self.client("Ada")
        await ada.sign_on()
        longest = "x" * 65_300  # with everything around it the answer is just below 65,535 bytes
        await ada.set_profile(longest)
        self.assertEqual(await ada.profile_of("ada"), longest)

    async def test_any_chunks_give_the_same_stream_in_both_directions(self):
        rng = random.Random(20170)
        client, server = await self.pair()
        for (source, seq), sink in (((server[1], 101), client[0]), ((client[1], 2), server[0])):
            stream = b"".join(frame(rng.choice((DATA, KEEP_ALIVE)), seq + number, rng.randbytes(rng.choice((0, 1, 4, 60, 900))))
                              for number in range(1500))
            position = 0
            while position < len(stream):
                size = rng.choice((1, 2, 3, 4, 5, 6, 7, 100, 4000))
                source.write(stream[position:position + size])
                await source.drain()
                position += size
            self.assertEqual(await within(sink.readexactly(len(stream))), stream)
