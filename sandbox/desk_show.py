"""What ./run shows around the two sample clients: wrenlow.exe takes an AIM client over at its start and gives it back.

The client is the stand-in, aim.exe. The boxes are answered by the script, which says so.
"""
import shutil
from pathlib import Path

from .desk import (OK, PROXY, SETTINGS, AimClient, Hand, Wrenlow, registry_forget, registry_set, registry_values)


class DeskShow:
    """`build` is the build tree of the Windows programs, which are copied to the folder `data`; `say` is called with
    every line."""

    def __init__(self, build, data, service, say):
        self._build, self._say = build, say
        self._hand = None
        self._aim = AimClient(build / "sandbox/aim/aim.exe", Path(data, "aim"), service)
        self._wrenlow = Wrenlow(shutil.copy(build / "app/shell/wrenlow.exe", data))

    async def begin(self):
        """Until the client is signed on through Wrenlow."""
        self._hand = await Hand.reach_out(self._build / "sandbox/hand/hand.exe")
        await registry_forget(PROXY)
        await registry_set(SETTINGS, setupaim="1", revertsettings="1", checkupdate="0", onstartup="0")
        self._say("aim.exe, a stand-in for the AIM client, starts; its settings name no proxy")
        await self._aim.start()
        await self._signs_on("directly")

        self._say('wrenlow.exe starts; its settings "setupaim" and "revertsettings" are on')
        await self._wrenlow.start()
        for _ in range(3):
            await self._answer()
        await self._signs_on(f"through 127.0.0.1:{Wrenlow.PORT}")
        await self._tell_proxy()

    async def end(self):
        """Until the client is signed on without Wrenlow again, and everything is closed."""
        self._say("wrenlow.exe is asked to close")
        await self._wrenlow.ask_to_end()
        for _ in range(2):
            await self._answer()
        if status := await self._wrenlow.end():
            raise AssertionError(f"wrenlow.exe has ended with status {status}")
        await self._signs_on("directly")
        await self._tell_proxy()
        await self._aim.close(self._hand)
        await self._hand.rest()
        self._say("aim.exe is closed")

    async def _answer(self):
        box = await self._hand.next_box()
        self._say(f'a box asks, and OK is pressed for you:  [{box.title}] {box.text}')
        await self._hand.press(OK)

    async def _signs_on(self, way):
        process = await self._aim.signs_on(way)
        self._say(f"aim.exe (process {process}) has signed on {way}")

    async def _tell_proxy(self):
        values = await registry_values(PROXY)
        self._say("its proxy settings in the registry:  " + ", ".join(f"{name} {text}" for name, (_, text) in values.items()))
