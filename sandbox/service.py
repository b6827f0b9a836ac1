"""The scripted OSCAR service: one port for authorisation, BOS and service connections, as real ones have.

Everybody may sign on with any password. What arrives and what is sent stands in `events`; a breach of the
protocol stands there as "fault" and ends the connection, so a test that finds no fault has seen clean frames.
"""
import asyncio
import os
import struct
import time
from dataclasses import dataclass

from . import wire
from .describe import describe
from .record import Record, within
from .wire import parse_tlvs, same_name, snac, tlv

COOKIE_SIZE = 256
BOS = 0  # the family that stands for the BOS connection in a cookie
TEXT_TYPE = b'text/aolrtf; charset="us-ascii"'
FAMILIES = (0x01, 0x02, 0x03, 0x04, 0x09, 0x13)
CHAT = 0x0E  # the family of a chat room's connections


@dataclass
class Event:
    kind: str  # "open", "received", "sent", "closed" or "fault"
    name: str  # screen name, "" before the sign-on
    connection: str  # "auth", "bos" or "service 0D"
    text: str
    frame: wire.Frame | None = None
    peer: "Connection | None" = None


class User:
    """A screen name that is signed on: its BOS connection and what others may ask about it."""

    def __init__(self, connection):
        self.connection = connection
        self.name = connection.name
        self.since = int(time.time())
        self.profile = self.away = b""
        self.profile_type = self.away_type = TEXT_TYPE
        self.idle = 0
        self.buddies = []
        self.ready = False

    def info(self):
        """The user-information block: six TLVs, as servers of the later years sent it."""
        tlvs = [tlv(0x03, struct.pack(">I", self.since)), tlv(0x01, struct.pack(">H", 0x30 if self.away else 0x10)),
                tlv(0x06, struct.pack(">I", 0x100 if self.away else 0)), tlv(0x1D, b"\x00\x01\x00\x05" + bytes(5)),
                tlv(0x0D, bytes(16)), tlv(0x1E, bytes(4))]
        return wire.pack_name(self.name) + struct.pack(">HH", 0, len(tlvs)) + b"".join(tlvs)


class Connection:
    """One connection from a client. The handler of SNAC(family, subtype) is a method named on_FF_SS."""

    def __init__(self, service, stream):
        self.service, self.stream = service, stream
        self.kind, self.name, self.user = "auth", "", None

    async def serve(self):
        self._note("open", "connected")
        try:
            await self.send(wire.SIGN_ON, wire.HELLO)
            while frame := await self.stream.read():
                self._note("received", describe(frame), frame)
                await self._handle(frame)
            self._note("closed", "ended by the client")
        except wire.WireFault as fault:
            self._note("fault", str(fault))
        except (struct.error, IndexError, KeyError, UnicodeDecodeError) as error:
            self._note("fault", f"malformed contents: {error!r}")
        except ConnectionError as error:
            self._note("closed", f"broken: {error}")
        finally:
            await self._leave()

    async def send(self, channel, payload=b""):
        seq = await self.stream.send(channel, payload)
        frame = wire.Frame(channel, seq, payload)
        self._note("sent", describe(frame), frame)

    async def send_snac(self, family, subtype, data=b"", request=0):
        await self.send(wire.DATA, snac(family, subtype, data, request))

    async def _handle(self, frame):
        if frame.channel == wire.SIGN_ON:
            await self._hello(frame.payload)
        elif frame.channel == wire.DATA:
            family, subtype = frame.snac
            handler = getattr(self, f"on_{family:02X}_{subtype:02X}", None)
            if handler:
                await handler(frame.data, frame.request)
            elif subtype != 1:
                await self.send_snac(family, 1, struct.pack(">H", 1), frame.request)

    async def _hello(self, payload):
        if payload[:4] != wire.HELLO:
            raise wire.WireFault(f"hello with {payload[:4].hex(' ')}")
        cookie = parse_tlvs(payload[4:]).get(6)
        if cookie is None:
            return  # the authorisation connection goes on with SNACs
        self.name, family = self.service.cookies.pop(cookie)
        if family == BOS and self.service.ends_sessions:
            return await self.stream.close()
        if family == BOS:
            self.kind = "bos"
            await self.service.sign_on(self)
        else:
            self.kind = f"service {family:02X}"
            if family == CHAT:
                self.service.room.add(self)
        families = FAMILIES if family == BOS else (1, family)
        await self.send_snac(1, 3, struct.pack(f">{len(families)}H", *families))

    async def on_17_06(self, data, request):
        parse_tlvs(data)[1]  # the name must be there
        key = b"%010d" % int.from_bytes(os.urandom(4), "big")
        await self.send_snac(0x17, 7, struct.pack(">H", len(key)) + key, request)

    async def on_17_02(self, data, request):
        self.name = parse_tlvs(data)[1].decode("latin-1")
        name = tlv(1, self.name.encode("latin-1"))
        if self.service.login_error:
            return await self.send_snac(0x17, 3, name + tlv(8, struct.pack(">H", self.service.login_error)), request)
        cookie, address = self.service.new_cookie(self.name, BOS), self.service.advertised_address()
        await self.send_snac(0x17, 3, name + tlv(5, address) + tlv(6, cookie) + tlv(0x11, b"a@example.com"), request)

    async def on_01_17(self, data, request):
        await self.send_snac(1, 0x18, data, request)

    async def on_01_06(self, _data, request):
        # one class: id, window, clear, alert, limit, disconnect, current, maximum, last time, state
        limits = struct.pack(">HIIIIIIIIB", 1, 80, 2500, 2000, 1500, 800, 6000, 6000, 0, 0)
        group = struct.pack(">HHHH", 1, 1, 4, 6)  # class 1 holds SNAC(4,6)
        await self.send_snac(1, 7, struct.pack(">H", 1) + limits + group, request)

    async def on_01_08(self, _data, _request):
        pass

    async def on_01_0E(self, _data, request):
        await self.send_snac(1, 0xF, self.user.info(), request)

    async def on_01_02(self, _data, _request):
        if self.user:
            self.user.ready = True
            await self.service.announce(self.user)
        elif self.kind == f"service {CHAT:02X}":
            room = struct.pack(">H", 4) + wire.pack_name("!aol://2719:10-4-poets") + struct.pack(">HBH", 0, 2, 1)
            await self.send_snac(CHAT, 2, room + tlv(0xD3, b"Poets"))

    async def on_01_04(self, data, request):
        family = struct.unpack(">H", data[:2])[0]
        cookie = self.service.new_cookie(self.name, family)
        address = self.service.advertised_address()
        await self.send_snac(1, 5, tlv(0xD, data[:2]) + tlv(5, address) + tlv(6, cookie), request)

    async def on_01_11(self, data, _request):
        self.user.idle = struct.unpack(">I", data)[0]

    async def on_02_02(self, _data, request):
        await self.send_snac(2, 3, tlv(1, struct.pack(">H", 4096)), request)

    async def on_02_04(self, data, _request):
        tlvs = parse_tlvs(data)
        self.user.profile_type = tlvs.get(1, self.user.profile_type)
        self.user.away_type = tlvs.get(3, self.user.away_type)
        self.user.profile = tlvs.get(2, self.user.profile)
        self.user.away = tlvs.get(4, self.user.away)

    async def on_02_05(self, data, request):
        wants = {1: 1, 3: 2}.get(struct.unpack(">H", data[:2])[0], 0)
        await self._about(data[2:], wants, request)

    async def on_02_15(self, data, request):
        await self._about(data[4:], struct.unpack(">I", data[:4])[0], request)

    async def _about(self, name, wants, request):
        """Answers with the profile (bit 0 of `wants`) and the away message (bit 1)."""
        user = self.service.user(wire.parse_name(name)[0])
        if not user:
            return await self.send_snac(2, 1, struct.pack(">H", 4), request)
        reply = user.info()
        if wants & 1:
            reply += tlv(1, user.profile_type) + tlv(2, user.profile)
        if wants & 2:
            reply += tlv(3, user.away_type) + tlv(4, user.away)
        await self.send_snac(2, 6, reply, request)

    async def on_03_02(self, _data, request):
        await self.send_snac(3, 3, tlv(1, struct.pack(">H", 500)), request)

    async def on_03_04(self, data, _request):
        while data:
            name, data = wire.parse_name(data)
            self.user.buddies.append(name)
            buddy = self.service.user(name)
            if buddy and buddy.ready:
                await self.send_snac(3, 0xB, buddy.info())

    async def on_04_04(self, _data, request):
        await self.send_snac(4, 5, struct.pack(">HIHHHI", 2, 3, 8000, 999, 999, 0), request)

    async def on_04_06(self, data, request):
        cookie_and_channel = data[:10]
        name, rest = wire.parse_name(data[10:])
        tlvs = parse_tlvs(rest)
        if 2 in tlvs:
            wire.parse_message(tlvs[2])
        if 5 in tlvs:
            wire.parse_rendezvous(tlvs[5])
        receiver, keeps = self.service.user(name), self.service.keeps and 6 in tlvs
        if not receiver and not keeps:
            return await self.send_snac(4, 1, struct.pack(">H", 4), request)
        automatic = tlv(4) if 4 in tlvs else b""
        contents = b"".join(tlv(kind, tlvs[kind]) for kind in (2, 5) if kind in tlvs)
        message = cookie_and_channel + self.user.info() + contents + automatic
        if receiver:
            await receiver.connection.send_snac(4, 7, message)
        else:
            self.service.stored.setdefault(self.service.key(name), []).append((message, int(time.time())))
        if 3 in tlvs:
            await self.send_snac(4, 0xC, cookie_and_channel + wire.pack_name(name), request)
        if self.service.parts:
            await self.stream.close()

    async def on_04_10(self, _data, request):
        """What waits for the user, each message with the time at which it was sent."""
        for message, sent in self.service.stored.pop(self.service.key(self.name), []):
            await self.send_snac(4, 7, message + tlv(0x16, struct.pack(">I", sent)))
        await self.send_snac(4, 0x17, b"", request)

    async def on_09_02(self, _data, request):
        await self.send_snac(9, 3, tlv(1, struct.pack(">H", 200)), request)

    async def on_0E_05(self, data, _request):
        """What is said in the room, of which there is one, goes to everybody in it, back to the speaker when asked to."""
        said = parse_tlvs(data[10:])
        parse_tlvs(said[5])[1]  # the text must be there
        message = data[:10] + tlv(3, self.service.user(self.name).info()) + tlv(1) + tlv(5, said[5])
        for line in list(self.service.room):
            if line is not self or 6 in said:
                await line.send_snac(CHAT, 6, message)

    async def on_13_04(self, _data, request):
        """The whole list, in several frames when it is long, the time of its last change behind each."""
        items = [wire.pack_item(name, wire.pack_tlvs(tlvs), *place) for (name, *place), tlvs in self._list().items()]
        size = self.service.items_in_frame
        for at in range(0, max(len(items), 1), size):
            part = items[at:at + size]
            data = struct.pack(">BH", 0, len(part)) + b"".join(part) + struct.pack(">I", 1)
            await self.send(wire.DATA, snac(0x13, 6, data, request, int(at + size < len(items))))

    async def on_13_08(self, data, request):
        """Items that a client adds to its list: 0 for one that is taken, 3 for one that is there already."""
        codes = b""
        for name, group, number, kind, tlvs in wire.parse_items(data):
            taken = any(other[1:3] == (group, number) or (other[3] == kind and wire.same_name(other[0], name))
                        for other in self._list())
            if not taken:
                self._list()[name, group, number, kind] = tlvs
            codes += struct.pack(">H", 3 if taken else 0)
        await self.send_snac(0x13, 0xE, codes, request)

    async def on_13_09(self, data, request):
        """Items that a client changes: 2 for one that is not there."""
        codes = b""
        for name, group, number, kind, tlvs in wire.parse_items(data):
            known = (name, group, number, kind) in self._list()
            if known:
                self._list()[name, group, number, kind] = tlvs
            codes += struct.pack(">H", 0 if known else 2)
        await self.send_snac(0x13, 0xE, codes, request)

    async def on_13_11(self, _data, _request):
        pass

    on_13_12 = on_13_11

    def _list(self):
        return self.service.lists.setdefault(self.service.key(self.name), {})

    async def _leave(self):
        self.service.room.discard(self)
        if self.user and self.service.users.get(self.service.key(self.name)) is self.user:
            await self.service.sign_off(self.user)
        await self.stream.close()

    def _note(self, kind, text, frame=None):
        self.service.note(Event(kind, self.name, self.kind, text, frame, self))


class Service:
    """`first_seq` is the number of the first frame on every connection; `pause` (seconds) lies between the
    pieces of each frame. `on_event` sees every event as it happens.
    A service that `keeps` stores messages for whoever is off line, when asked to (TLV 6); one that `parts` ends a
    connection as soon as it has accepted a message.

    It misbehaves on request: `advertised` is the host that it sends clients to instead of its own, `login_error` the
    number with which it refuses everybody, and with `ends_sessions` it ends each session before it has begun."""

    def __init__(self, host="127.0.0.1", first_seq=100, pause=0.0, on_event=None, keeps=True, parts=False,
                 advertised=None, login_error=0, ends_sessions=False):
        self.host, self.port = host, 0
        self.advertised, self.login_error, self.ends_sessions = advertised, login_error, ends_sessions
        self.given = []  # all cookies
        self.users, self.cookies, self.room = {}, {}, set()
        self.lists, self.items_in_frame = {}, 100  # lists: {(name, group, number, kind): {type: value}} by screen name
        self.keeps, self.parts, self.stored = keeps, parts, {}  # stored: [(message, seconds since 1970)] by receiver
        self.events = Record()
        self._first_seq, self._pause, self._on_event = first_seq, pause, on_event
        self._server, self._tasks = None, set()

    async def start(self, port=0):
        self._server = await asyncio.start_server(self._accept, self.host, port)
        self.port = self._server.sockets[0].getsockname()[1]

    async def stop(self):
        self._server.close()
        for task in self._tasks:
            task.cancel()
        await within(asyncio.gather(*self._tasks, return_exceptions=True), "the service's connections to end")

    @property
    def faults(self):
        return [event for event in self.events.items if event.kind == "fault"]

    async def received(self, name, family, subtype):
        """The first such frame that came from this screen name, when it is there."""
        event = await self.events.find(lambda event: event.kind == "received" and same_name(event.name, name)
                                       and event.frame.snac == (family, subtype),
                                       f"SNAC({family:#x},{subtype:#x}) from {name}")
        return event.frame

    def note(self, event):
        self.events.add(event)
        if self._on_event:
            self._on_event(event)

    @staticmethod
    def key(name):
        return name.replace(" ", "").lower()

    def user(self, name):
        return self.users.get(self.key(name))

    def new_cookie(self, name, family):
        raw = wire.pack_name(name)
        cookie = raw + os.urandom(COOKIE_SIZE - len(raw))
        self.cookies[cookie] = name, family
        self.given.append(cookie)
        return cookie

    def advertised_address(self):
        return f"{self.advertised or self.host}:{self.port}".encode()

    async def sign_on(self, connection):
        elsewhere = self.user(connection.name)
        connection.user = self.users[self.key(connection.name)] = User(connection)
        if elsewhere:
            await elsewhere.connection.send(wire.SIGN_OFF, tlv(9, b"\0\1") + tlv(0xB, b"http://www.example.com/elsewhere"))
            await elsewhere.connection.stream.close()

    async def announce(self, user):
        for other in self._watchers(user):
            await other.connection.send_snac(3, 0xB, user.info())

    async def sign_off(self, user):
        del self.users[self.key(user.name)]
        for other in self._watchers(user):
            try:
                await other.connection.send_snac(3, 0xC, user.info())
            except ConnectionError:
                pass  # its own connection will notice

    def _watchers(self, user):
        return [other for other in self.users.values()
                if other.ready and any(same_name(name, user.name) for name in other.buddies)]

    async def _accept(self, reader, writer):
        self._tasks.add(asyncio.current_task())
        stream = wire.FrameStream(reader, writer, self._first_seq, piecewise=True, pause=self._pause)
        try:
            await Connection(self, stream).serve()
        except asyncio.CancelledError:
            pass  # the service stops
        finally:
            self._tasks.discard(asyncio.current_task())
