"""What the program tells of a sign-on that fails, each failure provoked by a service that misbehaves; and how it finds the
server when the advertised address is wrong."""
import asyncio
import os
import shutil
import struct
import subprocess

from sandbox.desk import Hand
from sandbox.program import PATIENCE
from sandbox.wire import DATA, HELLO, pack_item, pack_name, tlv
from tests.e2e import support
from tests.e2e.support import FeatureTest
from tests.e2e.target import free_port

NOWHERE = "127.0.0.2"  # nobody listens there
NEXT_PAGE = "17 9"  # Ctrl+Tab
RATES = 0x0A
LIMITED = struct.pack(">HHIIIIIIIIB", 3, 1, 80, 2500, 2000, 1500, 800, 1400, 6000, 0, 0)


class Why(FeatureTest):
    async def asyncSetUp(self):
        await super().asyncSetUp()
        if support.target.name == "exe":
            self.hand = await Hand.reach_out(support.target.hand)
            self.addAsyncCleanup(self.hand.rest)
            await self.hand.do("open", "open")

    async def verdict(self):
        """What is said of the last sign-on: to a command, or on a page of the window."""
        if support.target.name == "relay":
            return await asyncio.to_thread(support.target.verdict, support.program)
        texts = [text for text in (await self.hand.ask("read Wrenlow")).split("\t") if text]
        if "What to do" in texts:
            return texts[texts.index("What to do") - 1]
        return await self.hand.ask(f"keys {NEXT_PAGE}")

    async def expect(self, verdict):
        told = None
        for _ in range(PATIENCE * 10):
            told = await self.verdict()
            if told == verdict:
                return
            await asyncio.sleep(0.1)
        self.fail(f"the verdict is {told!r}, and not {verdict!r}")

    async def fails_to_sign_on(self, client):
        with self.assertRaises((OSError, EOFError, KeyError, LookupError, AssertionError, asyncio.IncompleteReadError, TimeoutError)):
            await client.sign_on()
        await client.close()

    async def test_signed_on_and_off(self):
        ada = self.client("Ada")
        await ada.sign_on()
        await self.expect("Ada is signed on.")
        await ada.close()
        await self.expect("Ada was signed on; the session was ended by the client.")
        await ada.sign_on()
        await self.expect("Ada is signed on.")
        await self.service.user("Ada").connection.stream.close()
        await self.expect("Ada was signed on; the session was ended by the server.")

    async def test_refused_by_the_server(self):
        service = await self.new_service(login_error=5)
        await self.fails_to_sign_on(self.client("Ada", service, victim=True))
        await self.expect("The server refused to sign Ada on: The password is wrong (error 5).")

    async def test_nothing_listens(self):
        service = await self.new_service()
        service.port = free_port()
        await self.fails_to_sign_on(self.client("Ada", service, victim=True))
        await self.expect(f"The server 127.0.0.1:{service.port} refuses the connection: nothing listens there.")

    async def test_nothing_answers(self):
        service = await self.new_service()
        service.port = self.silent_port("127.0.0.1")
        ada = self.client("Ada", service, victim=True)
        signing_on = asyncio.create_task(ada.sign_on())
        await self.expect(f"AIM is connecting to 127.0.0.1:{service.port}.")
        signing_on.cancel()
        await self.expect(f"The server 127.0.0.1:{service.port} does not answer; AIM gave up.")

    async def test_the_name_is_unknown(self):
        service = await self.new_service()
        service.host = "nobody.invalid"
        await self.fails_to_sign_on(self.client("Ada", service, victim=True))
        await self.expect("The server's name nobody.invalid is not known.")

    async def test_sent_astray(self):
        self.settings(**{"server-fallback": "0"})
        service = await self.new_service(advertised=NOWHERE)
        await self.fails_to_sign_on(self.client("Ada", service, victim=True))
        await self.expect(f"The server sent AIM to {NOWHERE}:{service.port}, which cannot be reached from here. Its operator "
                          "must change the address that it advertises.")

    async def test_signed_on_elsewhere(self):
        ada = self.client("Ada", victim=True)
        await ada.sign_on()
        elsewhere = self.client("Ada")
        elsewhere._via = None
        await elsewhere.sign_on()
        await self.expect("Ada was signed off because the same name has signed on elsewhere.")

    async def test_slowed_and_cut_by_the_rate_limit(self):
        ada = self.client("Ada", victim=True)
        await ada.sign_on()
        at_server = self.service.user("Ada").connection
        await at_server.send_snac(1, RATES, LIMITED)
        await self.expect("Ada is signed on, but has sent too much too fast: the server takes nothing more until that has been "
                          "quiet for a while.")
        await at_server.stream.close()
        await self.expect("The server ended the session of Ada, which had sent too much too fast.")

    async def test_aim_ends_the_session_before_it_has_begun(self):
        ada = self.client("Ada", victim=True)
        address, cookie = await ada._authorise()
        await (await ada._open(address)).hello(HELLO + tlv(6, cookie))
        await self.expect("Ada is signing on.")
        await ada.close()
        await self.expect("AIM ended the connection before Ada was signed on.")

    async def test_the_server_ends_the_session_before_it_has_begun(self):
        service = await self.new_service(ends_sessions=True)
        await self.fails_to_sign_on(self.client("Ada", service, victim=True))
        await self.expect(f"The server 127.0.0.1:{service.port} ended the connection before Ada was signed on, and gave no "
                          "reason.")

    async def test_a_wrong_address_costs_neither_the_session_nor_its_services_nor_a_byte(self):
        service = await self.new_service(advertised=NOWHERE)
        for what, silent in (("refuses", None), ("does not answer", service.port)):
            with self.subTest(what):
                if silent:
                    self.silent_port(NOWHERE, silent)
                ada = await self.signed_on_with_services(service)
                await self.expect(f"Ada is signed on. The server had sent AIM to {NOWHERE}:{service.port}, which cannot be reached "
                                  f"from here; Wrenlow used 127.0.0.1:{service.port}.")
                await ada.close()

    async def test_a_server_of_ipv6_alone(self):
        """Its address is one that no client of SOCKS4 can ask for."""
        try:
            service = await self.new_service(host="::1", advertised="[::1]")
        except OSError:
            self.skipTest("there is no IPv6 here")
        self.settings(server=f"[::1]:{service.port}")
        service.host = "login.example.com"
        await self.signed_on_with_services(service)
        await self.expect("Ada is signed on.")

    async def signed_on_with_services(self, service):
        ada = self.client("Ada", service)
        await ada.sign_on()  # with two services
        await ada.say("Ada", "to myself")
        self.assertEqual(await ada.hear(), ("Ada", "to myself"))
        self.assertEqual(len(ada.services), 2)
        return ada


class Captures(FeatureTest):
    """Of wrenlow-relay alone: the window has a test of its own for the button."""
    OFF = FeatureTest.OFF | {"fetchmessages": "1"}

    def setUp(self):
        if support.target.name != "relay":
            self.skipTest("saved by the window there")
        if not shutil.which("tshark"):
            self.skipTest("tshark is not installed")

    async def test_a_capture_opens_with_every_frame_dissected_as_it_was_sent(self):
        file = os.path.join(self.folder(), "frames.pcapng")
        self.settings(fetchmessages="0")  # in two seconds; the answer, which is dropped, would be in no capture
        program = support.target.start(options=["--pcapng", file])
        self.addCleanup(program.kill)
        await asyncio.to_thread(program.wait_until_listening)
        self.aliases(b"tomsample\r\nFred\r\n")
        ada = self.client("Ada", through=program)
        await ada.sign_on(buddies=["Ada", "Fred"])
        await ada.say("Ada", "a secret to nobody")
        await ada.hear()
        await ada.bos.send_snac(4, 6, bytes(8) + b"\0\2" + pack_name("Ada") + tlv(5, bytes(26) + tlv(0xC, b"An invitation")))
        await ada.bos.take(4, 7)
        self.assertTrue(await ada.enter_room())  # in silence: tshark reads what is said at fixed places, and not by its TLVs
        # An alias, which makes frames longer: the lengths around it must be right for this reader too.
        await ada.bos.ask(0x13, 8, pack_item("Fred", tlv(0x131, b"Fred") + tlv(0x13C, b"a comment")), 0xE)
        self.assertEqual((await self.service.received("Ada", 0x13, 8)).data.count(b"tomsample"), 2)
        await ada.sign_off()
        await asyncio.to_thread(program.say, "quit")
        await asyncio.to_thread(program._process.wait, PATIENCE)
        decode = [word for port in (self.service.port, program.port) for word in ("-d", f"tcp.port=={port},aim")]
        ask = lambda *what: subprocess.run(["tshark", "-r", file, *decode, *what], capture_output=True, text=True,
                                           timeout=PATIENCE * 4, check=True).stdout
        self.assertEqual(await asyncio.to_thread(ask, "-Y", "_ws.malformed"), "")
        self.assertEqual(await asyncio.to_thread(ask, "-Y", "tcp.analysis.flags"), "")
        told = await asyncio.to_thread(ask, "-Y", "aim && frame.interface_id==1", "-T", "fields", "-e", "aim.channel",
                                       "-e", "aim.fnac.family", "-e", "aim.fnac.subtype")
        columns = [[int(word, 0) for line in told.splitlines() for word in line.split("\t")[column].split(",") if word]
                   for column in range(3)]
        sent = [event.frame for event in self.service.events.items if event.frame]
        commands = [frame.snac for frame in sent if frame.channel == DATA]
        self.assertGreater(len(commands), 40)
        self.assertEqual(sorted(columns[0]), sorted(frame.channel for frame in sent))
        self.assertEqual(sorted(columns[1]), sorted(family for family, _ in commands))
        self.assertEqual(sorted(columns[2]), sorted(subtype for _, subtype in commands))
        with open(file, "rb") as saved:
            data = saved.read()
        for cookie in self.service.given:
            self.assertNotIn(cookie, data)

