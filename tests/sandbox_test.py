"""The sandbox by itself: it gets along without a relay, and it notices frames that are wrong."""
import asyncio
import struct
import unittest

from sandbox.client import Client
from sandbox.service import Service
from sandbox.wire import DATA, HELLO, SIGN_ON, FrameStream, WireFault
from tests.report import BoundedTest


def frame(seq, channel=DATA, payload=b"x", marker=0x2A):
    return struct.pack(">BBHH", marker, channel, seq, len(payload)) + payload


FAULTY = {
    "a wrong marker": frame(1, marker=0x2B),
    "a channel that does not exist": frame(1, channel=6),
    "a gap in the numbers": frame(1) + frame(3),
    "a repeated number": frame(1) + frame(1),
    "no wrap after 65535": frame(0xFFFF) + frame(1),
    "an end in the header": frame(1)[:4],
    "an end in the payload": frame(1, payload=b"four")[:8],
    "four bytes instead of an empty frame": frame(1) + struct.pack(">BBH", 0x2A, DATA, 2),
}


class Sandbox(BoundedTest):
    async def test_notices_what_is_wrong_with_a_stream(self):
        for what, data in FAULTY.items():
            with self.subTest(what=what):
                async def send(_reader, writer, data=data):
                    writer.write(data)
                    writer.close()
                server = await asyncio.start_server(send, "127.0.0.1", 0)
                stream = FrameStream(*await asyncio.open_connection(*server.sockets[0].getsockname()))
                with self.assertRaises(WireFault):
                    while await stream.read():
                        pass
                await stream.close()
                server.close()

    async def test_a_service_reports_the_client_that_breaks_the_numbers(self):
        service = Service()
        await service.start()
        _reader, writer = await asyncio.open_connection(service.host, service.port)
        writer.write(frame(1, SIGN_ON, HELLO) + frame(3))
        await service.events.find(lambda event: event.kind == "fault")
        writer.close()
        await service.stop()

    async def test_client_and_service_need_no_relay(self):
        service = Service(pause=0.0005)
        await service.start()
        ada, tom = (Client(name, (service.host, service.port)) for name in ("Ada", "tom"))
        await ada.sign_on(buddies=["tom"])
        await tom.sign_on()
        await ada.sees("tom")
        await ada.say("tom", "direct ✓")
        self.assertEqual(await tom.hear(), ("Ada", "direct ✓"))
        for client in (ada, tom):
            await client.sign_off()
            self.assertEqual(client.faults, [])
        await service.stop()
        self.assertEqual(service.faults, [])


if __name__ == "__main__":
    unittest.main()
