"""A list that grows while others wait for what they look for: no test ever sleeps and hopes."""
import asyncio

PATIENCE = 20  # seconds; a bound for what should come at once, wide enough for a busy machine under Wine


class Record:
    def __init__(self):
        self.items = []
        self._ended = None
        self._changed = asyncio.Event()

    def add(self, item):
        self.items.append(item)
        self._wake()

    def end(self, reason):
        """Nothing more will come; whoever waits is told why."""
        self._ended = reason
        self._wake()

    async def find(self, matches, patience=PATIENCE):
        """The first item that matches, when it is there. It stays in the list."""
        async def look():
            while True:
                for item in self.items:
                    if matches(item):
                        return item
                if self._ended:
                    raise ConnectionError(self._ended)
                await self._changed.wait()
        return await asyncio.wait_for(look(), patience)

    async def take(self, matches, patience=PATIENCE):
        """As find, but removes the item, so that the next look finds the next one."""
        item = await self.find(matches, patience)
        self.items.remove(item)
        return item

    def _wake(self):
        self._changed.set()
        self._changed = asyncio.Event()
