"""The update of a wrenlow.exe whose update server (tests/win32/CMakeLists.txt) is played here. A conversation goes on
meanwhile."""
import asyncio
import os
from pathlib import Path

from sandbox.desk import OK
from sandbox.record import within
from tests.desk.test_aim_client import Desk

SERVER = "127.0.0.1", 11081
REQUEST = b"GET %s HTTP/1.1\r\nHost: localhost\r\n\r\n"
CHECK, SETUP = b"/wrenlow/latest_version.php", b"/get/setup.exe"
GOOD = b"HTTP/1.1 200 OK\r\n"


class Updates(Desk):
    PROGRAM = "tests/win32/asking/wrenlow.exe"

    async def test_a_setup_file_of_many_megabytes_arrives_whole_where_the_user_wants_it(self):
        folder, setup = self.folder(), os.urandom(16 << 20)
        answers = {REQUEST % CHECK: GOOD + b"\r\nUpdate: 18 %s C:\\a/../..\\wrenlow18.exe\r\n" % SETUP,
                   REQUEST % SETUP: GOOD + b"Content-Length: %d\r\n\r\n" % len(setup) + setup}

        async def answer(reader, writer):
            writer.write(answers[await within(reader.readuntil(b"\r\n\r\n"))])
            writer.close()
        server = await asyncio.start_server(answer, *SERVER)
        self.addCleanup(server.close)
        await self.start(setupaim="0", checks_for_update=True)
        await self.accompany()
        await self.shows("Wrenlow Update")
        place = "Z:" + folder.replace("/", "\\") + "\\chosen.exe"
        for button in ("Cancel", "&Save"):
            await self.hand.do("push Wrenlow Update\tDownload", "open")
            await self.shows("Save Setup File")
            self.assertIn("wrenlow18.exe", (await self.hand.ask("read Save Setup File")).split("\t"))
            await self.hand.do(f"fill Save Setup File\t0\t{place}", "filled")
            await self.hand.do(f"push Save Setup File\t{button}", "closed")
        self.assertEqual((await self.hand.next_box()).title, "Download Complete")
        await self.undisturbed()
        await self.hand.press(OK)
        self.assertEqual(os.listdir(folder), ["chosen.exe"])
        self.assertTrue(Path(folder, "chosen.exe").read_bytes() == setup)
