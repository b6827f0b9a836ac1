"""Waiting, always with a bound: for an awaitable (within), and for an item of a list that grows (Record). No test ever
sleeps and hopes, and none waits for ever."""
import asyncio

PATIENCE = 20  # seconds; a bound for what should come at once, wide enough for a busy machine under Wine


async def within(awaitable, what="what should come at once", patience=PATIENCE):
    """What the awaitable gives. A TimeoutError says what was waited for: a text, or a function that gives one. Without
    patience (None) it waits for ever."""
    limit = asyncio.timeout(patience)
    try:
        async with limit:
            return await awaitable
    except TimeoutError:
        if not limit.expired():
            raise  # somebody else's, further in
        raise TimeoutError(f"waited {patience} s in vain for {what() if callable(what) else what}") from None


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

    async def find(self, matches, what="an item", patience=PATIENCE):
        """The first item that matches, when it is there. It stays in the list."""
        async def look():
            while True:
                for item in self.items:
                    if matches(item):
                        return item
                if self._ended:
                    raise ConnectionError(self._ended)
                await self._changed.wait()
        return await within(look(), lambda: f"{what}; the last of {len(self.items)} are {self.items[-3:]!r:.400}", patience)

    async def take(self, matches, what="an item", patience=PATIENCE):
        """As find, but removes the item, so that the next look finds the next one."""
        item = await self.find(matches, what, patience)
        self.items.remove(item)
        return item

    def _wake(self):
        self._changed.set()
        self._changed = asyncio.Event()
