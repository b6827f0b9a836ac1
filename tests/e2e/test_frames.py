"""Streams of frames between a bare client and a bare server: what comes out is what went in."""
import random
import struct

from sandbox.wire import DATA, KEEP_ALIVE, SIGN_OFF
from tests.e2e.support import RelayTest, frame, within


def bare_goodbye(seq):
    """The four bytes, without a length field, with which servers end the sessions of old clients."""
    return struct.pack(">BBH", 0x2A, SIGN_OFF, seq)


class Frames(RelayTest):
    async def test_a_four_byte_goodbye_arrives_as_an_empty_frame(self):
        last = frame(DATA, 101, b"the last words")
        for before, closes in ((b"", True), (last, True), (last, False)):  # behind a frame it arrives though nobody closes
            with self.subTest(before=before, closes=closes):
                (reader, _), (_, server) = await self.pair()
                seq = 102 if before else 101
                server.write(before + bare_goodbye(seq))
                if closes:
                    server.close()
                expected = before + frame(SIGN_OFF, seq)
                self.assertEqual(await within(reader.readexactly(len(expected))), expected)

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

    async def test_numbers_are_made_consecutive(self):
        (reader, _), (_, server) = await self.pair()
        server.write(b"".join(frame(DATA, seq, bytes([number])) for number, seq in enumerate((7, 7, 0xFFFF, 0))))
        expected = b"".join(frame(DATA, 101 + number, bytes([number])) for number in range(4))
        self.assertEqual(await within(reader.readexactly(len(expected))), expected)
