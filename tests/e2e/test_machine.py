"""Trouble with the machine, and other machines: output that nobody reads, folders that are not there, foreign addresses.

Each test starts a wrenlow-relay of its own; wrenlow.exe has no output, and its folders are tried with its windows.
"""
import asyncio
import os
import socket
import subprocess
import sys

from sandbox.client import Client
from sandbox.service import Service
from tests.e2e import support
from tests.report import BoundedTest

VISITORS = 3_000  # two lines each: more than a pipe takes


class Machine(BoundedTest):
    async def asyncSetUp(self):
        if support.target.name != "relay":
            self.skipTest("for the native program")
        self.program = None
        self.service = Service()
        await self.service.start()
        self.addAsyncCleanup(self.service.stop)

    def start(self, **options):
        self.program = support.start(**options)
        self.addCleanup(self.program.kill)
        return self.program

    def state(self):
        return self.program.state() if self.program else "no program was started"

    async def expect_works(self, program):
        """Somebody signs on and hears himself; the bystander is heard, too."""
        ada = Client("Ada", (self.service.host, self.service.port), program.address)
        self.addAsyncCleanup(ada.close)
        await ada.sign_on()
        await ada.say("Ada", "still there?")
        self.assertEqual(await ada.hear(), ("Ada", "still there?"))
        await asyncio.to_thread(support.Bystanders.ask, program.bystander, self)

    async def test_output_that_nobody_reads_and_then_nobody_can(self):
        reading, writing = os.pipe()
        program = self.start(output=writing)
        os.close(writing)
        await asyncio.to_thread(self.visit, program, VISITORS)
        await self.expect_works(program)
        os.close(reading)
        await asyncio.to_thread(self.visit, program, 10)
        await self.expect_works(program)
        program.ask_to_end()
        self.assertEqual(await asyncio.to_thread(program.wait), 0)

    def visit(self, program, times):
        for _ in range(times):
            with socket.create_connection(program.address, timeout=20) as connection:
                connection.shutdown(socket.SHUT_WR)
                connection.recv(1)

    async def test_a_data_folder_that_nothing_can_be_written_to(self):
        program = self.start(data="/proc/self/fdinfo")
        await self.expect_works(program)

    async def test_no_other_address_of_the_machine_connects(self):
        if os.geteuid() != 0:
            self.skipTest("only root can make a network of its own")
        inside = ["unshare", "--net"]
        try:
            subprocess.run([*inside, "ip", "link", "set", "lo", "up"], check=True, capture_output=True)
        except (OSError, subprocess.CalledProcessError):
            self.skipTest("no network of its own can be made here")
        seen = await asyncio.to_thread(subprocess.run,
                                       [*inside, sys.executable, "-m", "tests.e2e.neighbour", support.target.path],
                                       check=False, capture_output=True, text=True, timeout=self.LONGEST)
        self.assertEqual(seen.returncode, 0, seen.stdout + seen.stderr)
