"""Buddy lists that outlive their server: kept as they come, put back to another account and another service."""
import asyncio
import os
import shutil

from sandbox.desk import Hand, until
from tests.e2e import support
from tests.e2e.support import FeatureTest
from tests.e2e.target import wait_until


def plain(name):
    return name.lower().replace(" ", "")


class BuddyLists(FeatureTest):
    def kept(self, name):
        folder = os.path.join(support.target.data, "buddies")
        names = os.listdir(folder) if os.path.isdir(folder) else []
        return sorted(file for file in names if file.startswith(name + " ") and file.endswith(".txt"))  # none half written

    @staticmethod
    def fill(service, name, size):
        """A list of two groups, with aliases, a permit and a deny list, and attributes that nobody knows."""
        items = {("", 0, 0, 1): {0xC8: b"\0\1\0\2"}, ("Friends", 1, 0, 1): {0xC8: b"".join(
            number.to_bytes(2, "big") for number in range(1, size + 1))}, ("Work", 2, 0, 1): {0x7777: b"unknown"}}
        for number in range(1, size + 1):
            items["buddy%d" % number, 1, number, 0] = {0x131: b"Alias %d" % number} if number % 2 else {}
        items["enemy", 0, 5001, 3] = items["friend", 0, 5002, 2] = {}
        service.lists[service.key(name)] = items

    async def test_a_list_of_252_goes_to_another_account_on_another_service(self):
        shutil.rmtree(os.path.join(support.target.data, "buddies"), ignore_errors=True)  # of tests that took long
        old, new = self.service, await self.new_service()
        self.fill(old, "Lost Account", 247)
        lost = self.client("Lost Account")
        await lost.sign_on(services=())
        read = await lost.read_list()
        self.assertEqual(len(read), 252)
        wait_until(lambda: len(self.kept("lostaccount")) == 1, "the list to be kept")
        await lost.read_list()
        await lost.sign_off()
        self.assertEqual(len(self.kept("lostaccount")), 1, "the same list again")
        found = self.client("Found Account", new)
        await found.sign_on(services=())
        new.lists[new.key("Found Account")] = {("", 0, 0, 1): {0xC8: b"\0\1"}, ("work", 1, 0, 1): {0xC8: b"\0\1"},
                                               ("BUDDY 7", 1, 1, 0): {0x131: b"kept"}}
        await self.put_back(self.kept("lostaccount")[0].removesuffix(".txt"), "foundaccount")
        await self.until_added(new)
        after = new.lists[new.key("Found Account")]
        self.assertEqual(after["BUDDY 7", 1, 1, 0], {0x131: b"kept"})
        groups = {name: group for name, group, _, kind in after if kind == 1}
        self.assertEqual(set(groups), {"", "work", "Friends"})
        names = {plain(name) for name, *_ in after}
        self.assertEqual(names, {plain(name) for name, *_ in read})
        self.assertEqual({tlvs[0x131] for (name, *_), tlvs in after.items() if name == "buddy9"}, {b"Alias 9"})
        friends = [number for name, group, number, kind in after if kind == 0 and group == groups["Friends"]]
        members = after["Friends", groups["Friends"], 0, 1][0xC8]
        self.assertEqual(members, b"".join(number.to_bytes(2, "big") for number in friends))
        self.assertFalse([frame for frame in found.bos.frames.items if frame.snac[0] == 0x13], "shown to the client")

    async def until_added(self, service):
        def is_over():
            return any(event.kind == "received" and event.frame.snac == (0x13, 0x12) for event in service.events.items)
        await asyncio.to_thread(wait_until, is_over, "the list to be there")

    async def put_back(self, kept, name):
        """As the program's user asks for it: by a command, or on the page of the window."""
        if support.target.name == "relay":
            return support.program.say(f"buddies put-back {kept} {name}")
        hand = await Hand.reach_out(support.target.hand)
        self.addAsyncCleanup(hand.rest)
        await hand.do("open", "open")
        for _ in range(9):  # the window opens with the keyboard on its tabs; the page is the last
            await hand.do("keys 39", "pressed")
        await hand.do("keys 9", "pressed")   # into the list
        await hand.do("keys 40", "pressed")  # its first row
        await until(lambda: self.has(hand, "read Wrenlow", "The first list that is kept"), "the list's text")
        await hand.ask("push Wrenlow\tPut back...")
        await until(lambda: self.has(hand, "read Wrenlow", "will be added; nothing is deleted."), "the preview")
        await hand.ask("push Wrenlow\tAdd these")
        box = await hand.next_box()
        self.assertIn("Shall AIM be restarted now", box.text)
        await hand.press(7)  # No
        await hand.ask("close Wrenlow")  # it is hidden, and stays

    @staticmethod
    async def has(hand, command, text):
        return text in await hand.ask(command)
