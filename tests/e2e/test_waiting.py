"""Messages for buddies who are off line: nothing lost, nothing twice, whatever happens to the server, the program and the
file in between."""
import os
import stat
import struct
import time

from sandbox import wire
from sandbox.desk import Hand
from sandbox.record import within
from sandbox.wire import parse_tlvs, tlv
from tests.e2e import support
from tests.e2e.support import FeatureTest
from tests.e2e.target import wait_until

AT_THE_SERVER = "[Wrenlow] tomsample is off line. Your message waits at the server."
HERE = "[Wrenlow] tomsample is off line. Wrenlow will send your message when tomsample is back."


class Waiting(FeatureTest):
    OFF = {**FeatureTest.OFF, "keepmessages": "0"}
    buddies = ["tomsample"]

    async def asyncSetUp(self):
        self.kill()
        if os.path.exists(self.file):
            os.remove(self.file)
        await super().asyncSetUp()
        self.settings(keepmessages="1")

    @property
    def file(self):
        return os.path.join(support.target.data, "waiting.dat")

    @staticmethod
    def kill():
        """Ends the program at once, as kill -9 does."""
        if support.program:
            support.program.kill()
            support.program = None

    async def sign_on(self, name, service=None, **options):
        client = self.client(name, service, **options)
        await client.sign_on(self.buddies, services=())
        return client

    async def post(self, client, text, to="tomsample"):
        """An IM on its way; gives its request."""
        data = os.urandom(8) + struct.pack(">H", 1) + wire.pack_name(to) + tlv(2, wire.pack_message(text)) + tlv(3)
        return await client.bos.send_snac(4, 6, data)

    async def answer(self, client, request):
        """The subtype of the answer to the request."""
        frame = await client.bos.frames.take(lambda frame: frame.snac[0] == 4 and frame.request == request, "an answer")
        return frame.snac[1]

    async def notice(self, client):
        """What the program says in the buddy's name, marked so that no client answers."""
        frame = await client.bos.take(4, 7)
        sender, _info, rest = wire.parse_user_info(frame.data[10:])
        self.assertEqual((sender, parse_tlvs(rest)[4]), ("tomsample", b""))
        return wire.parse_message(parse_tlvs(rest)[2])

    async def hears_only(self, tom, *texts):
        """These, and nothing else before what is said then."""
        for text in texts:
            self.assertEqual((await tom.hear())[1], text)
        await self.post(await self.sign_on("speaker", tom.service), "now")
        self.assertEqual((await tom.hear())[1], "now")

    async def come(self, service=None):
        tom = await self.sign_on("tomsample", service)
        tom.service = service or self.service
        return tom

    async def test_a_server_that_stores_keeps_the_message_and_it_is_fetched(self):
        ada = await self.sign_on("Ada Sample")
        self.assertEqual(await self.answer(ada, await self.post(ada, "at the server")), 0xC)
        self.assertEqual(await self.notice(ada), AT_THE_SERVER)
        self.assertFalse(os.path.exists(self.file))
        (message, sent), = self.service.stored["tomsample"]
        self.service.stored["tomsample"] = [(message, sent - 3600), (message, sent)]
        folder = self.log_to()
        tom = await self.come()
        then = time.localtime(sent - 3600)
        await self.hears_only(tom, time.strftime("[%a %H:%M] ", then) + "at the server", "at the server")
        self.assertFalse([frame for frame in tom.bos.frames.items if frame.snac == (4, 0x17)])
        with open(os.path.join(folder, time.strftime("AdaSample %Y-%m-%d.txt", then)), encoding="ascii") as log:
            self.assertEqual(log.readline(), time.strftime("AdaSample (%H:%M:%S): at the server\n", then))
        await self.post(ada, "told once")
        self.expect_reports(0)

    async def wait_here(self, service, text="in the file", **options):
        ada = await self.sign_on("Ada Sample", service, **options)
        request = await self.post(ada, text)
        self.assertEqual(await self.notice(ada), HERE)
        self.assertFalse([frame for frame in ada.bos.frames.items if frame.request == request], "the refusal")
        return ada

    async def test_what_no_server_stores_survives_the_program_and_is_sent_when_the_buddy_comes(self):
        service = await self.new_service(keeps=False)
        await self.wait_here(service, victim=True)
        if support.target.name == "relay":
            self.assertEqual(stat.S_IMODE(os.stat(self.file).st_mode), 0o600)
        self.kill()
        support.program = support.start()
        service = await self.new_service(keeps=False)
        await self.sign_on("Ada Sample", service)
        tom = await self.come(service)
        self.assertEqual((await tom.hear())[1], "in the file")
        wait_until(lambda: not os.path.exists(self.file), "the file to be gone")
        await self.hears_only(tom)

    async def test_a_server_that_acknowledges_and_parts(self):
        service = await self.new_service(parts=True)
        ada = await self.sign_on("Ada Sample", service)
        await self.post(ada, "stored")
        await within(ada.bos.ended(), "the end")
        self.assertFalse(os.path.exists(self.file))
        service.parts = False
        await self.sign_on("Ada Sample", service)
        await self.hears_only(await self.come(service), "stored")

    async def refusals_pass(self, reports=1, **options):
        """What cannot be kept is refused to the client as ever, and told once."""
        ada = await self.sign_on("Ada Sample", **options)
        for _ in range(3):
            self.assertEqual(await self.answer(ada, await self.post(ada, "unkept")), 1)
        await self.sign_on("tomsample", **options)  # his coming is no reason to read the file again
        self.expect_reports(reports)

    async def test_a_file_that_is_none_of_ours_or_huge_is_left_alone(self):
        for contents in (b"hostile", b"Wrenlow waiting messages 1\n\xff\xff\xff\xff", bytes(5_000_000)):
            with self.subTest(contents[:30]):
                self.kill()
                with open(self.file, "wb") as file:
                    file.write(contents)
                support.program, self._reported = support.start(), 0
                await self.refusals_pass(victim=True)  # of the next kill
                with open(self.file, "rb") as file:
                    self.assertEqual(file.read(), contents)

    async def test_a_disk_that_cannot_be_written(self):
        os.mkdir(self.file + ".new")  # in the way of the file to be renamed
        self.addCleanup(os.rmdir, self.file + ".new")
        await self.refusals_pass()

    async def test_a_file_that_another_program_has_locked(self):
        if support.target.name != "exe":
            self.skipTest("only Windows has locks that keep others out")
        service = await self.new_service(keeps=False)
        await self.wait_here(service)
        hand = await Hand.reach_out(support.target.hand)
        self.addAsyncCleanup(hand.rest)
        await hand.do("lock " + support.target.settings.path(self.file), "locked")
        bob = await self.sign_on("Bob Sample", service)
        self.assertEqual(await self.answer(bob, await self.post(bob, "unkept")), 1)
        await hand.do("unlock", "unlocked")
        await self.hears_only(await self.come(service), "in the file")
