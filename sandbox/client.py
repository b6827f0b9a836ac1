"""A stand-in for the AIM client: signs on through a SOCKS4 proxy (or directly), chats, and checks every frame.

Sign-on, as clients do it: the authorisation connection, then BOS, then the service connections at once.
"""
import asyncio
import ipaddress
import os
import struct

from . import wire
from .record import PATIENCE, Record, within
from .wire import DATA, HELLO, SIGN_OFF, SIGN_ON, parse_tlvs, snac, tlv

CHAT_ROOMS, CHAT, ICONS = 0x0D, 0x0E, 0x10  # families of the service connections
REPLY_SIZE = 8
GRANTED = b"\x00\x5A"


def socks4_request(host, port, user=b""):
    """An address is sent as it is; a name as SOCKS4a: address 0.0.0.1, the name behind the user name."""
    try:
        return struct.pack(">BBH", 4, 1, port) + ipaddress.IPv4Address(host).packed + user + b"\0"
    except ValueError:
        return struct.pack(">BBH", 4, 1, port) + b"\0\0\0\1" + user + b"\0" + host.encode() + b"\0"


async def connect(via, host, port):
    """Reader and writer of a connection to host:port, through the SOCKS4 proxy `via` (host, port) if given."""
    address = via or (host, port)
    reader, writer = await within(asyncio.open_connection(*address), "a connection to %s:%s" % address)
    if via is None:
        return reader, writer
    request = socks4_request(host, port)
    writer.write(request)
    try:
        reply = await within(reader.readexactly(REPLY_SIZE), f"the SOCKS4 reply for {host}:{port}")
    except BaseException:
        writer.close()
        raise
    address = request[2:8]
    if reply != GRANTED + address:
        raise wire.WireFault(f"SOCKS4 reply {reply.hex(' ')}")
    return reader, writer


class Line:
    """One connection of a client: a reader that keeps all frames until somebody takes them."""

    def __init__(self, stream, on_frame):
        self.stream = stream
        self.frames = Record()
        self.fault = None  # what was wrong with the stream
        self._on_frame = on_frame
        self._request = 0
        self._reading = asyncio.create_task(self._read())

    async def send_snac(self, family, subtype, data=b""):
        """Sends a SNAC under a new request number, which is the result."""
        self._request += 1
        request = self._request
        await self.stream.send(DATA, snac(family, subtype, data, request))
        return request

    async def ask(self, family, subtype, data, answer):
        """Sends SNAC(family, subtype) and gives the data of the answering SNAC(family, answer)."""
        request = await self.send_snac(family, subtype, data)
        frame = await self.frames.take(lambda frame: frame.snac in ((family, answer), (family, 1))
                                       and frame.request == request,
                                       f"the answer SNAC({family:#x},{answer:#x}) to SNAC({family:#x},{subtype:#x})")
        if frame.snac[1] == 1:
            raise LookupError(f"SNAC({family:#x},{subtype:#x}) refused")
        return frame.data

    async def take(self, family, subtype, patience=PATIENCE):
        return await self.frames.take(lambda frame: frame.snac == (family, subtype), f"SNAC({family:#x},{subtype:#x})", patience)

    async def hello(self, payload=HELLO):
        """The greeting of both sides. The client speaks without waiting, as soon as it is connected."""
        await self.stream.send(SIGN_ON, payload)
        frame = await self.frames.take(lambda frame: frame.channel == SIGN_ON, "the server's greeting")
        if frame.payload != HELLO:
            raise wire.WireFault(f"hello with {frame.payload.hex(' ')}")

    async def ended(self):
        """Waits until the server's side has ended."""
        await within(asyncio.shield(self._reading), "the server to end the connection")

    def when_ended(self, call):
        self._reading.add_done_callback(lambda _: call())

    async def close(self):
        await self.stream.close()
        await self.ended()

    async def _read(self):
        try:
            while frame := await self.stream.read():
                self.frames.add(frame)
                self._on_frame(frame)
        except wire.WireFault as fault:
            self.fault = str(fault)
        finally:
            self.frames.end(self.fault or "the server has ended the connection")


class Client:
    """`via` is the proxy as (host, port), None for none; `service` the address of the authorisation server.
    `on_frame` is called with every frame that arrives."""

    def __init__(self, name, service, via=None, first_seq=1, on_frame=lambda frame: None):
        self.name, self.display_name = name, ""
        self.bos, self.services = None, []
        self._service, self._via, self._first_seq, self._on_frame = service, via, first_seq, on_frame
        self._lines = []

    @property
    def faults(self):
        """What was wrong with the streams of its connections."""
        return [line.fault for line in self._lines if line.fault]

    async def sign_on(self, buddies=(), services=(CHAT_ROOMS, ICONS)):
        address, cookie = await self._authorise()
        self.bos = await self._open(address)
        await self.bos.hello(HELLO + tlv(6, cookie))
        await self.bos.take(1, 3)
        await self.bos.ask(1, 0x17, struct.pack(">HHHH", 1, 3, 4, 1), 0x18)
        await self.bos.ask(1, 6, b"", 7)
        await self.bos.send_snac(1, 8, struct.pack(">H", 1))
        self.display_name = wire.parse_name(await self.bos.ask(1, 0xE, b"", 0xF))[0]
        for family in (2, 3, 9):
            await self.bos.ask(family, 2, b"", 3)
        await self.bos.ask(4, 4, b"", 5)
        if buddies:
            await self.bos.send_snac(3, 4, b"".join(map(wire.pack_name, buddies)))
        await self.bos.send_snac(1, 2, struct.pack(">HHHH", 1, 3, 0x110, 0x8E4))
        self.services = await asyncio.gather(*map(self._open_service, services))

    async def say(self, to, text, automatic=False):
        """Sends an IM and waits until the server has accepted it."""
        body = tlv(2, wire.pack_message(text)) + (tlv(4) if automatic else tlv(3))
        data = os.urandom(8) + struct.pack(">H", 1) + wire.pack_name(to) + body
        if automatic:
            await self.bos.send_snac(4, 6, data)
        else:
            await self.bos.ask(4, 6, data, 0xC)

    async def hear(self, patience=PATIENCE):
        """The next IM as (sender, text). Waits for ever without patience (None)."""
        frame = await self.bos.take(4, 7, patience)
        sender, _info, rest = wire.parse_user_info(frame.data[10:])
        return sender, wire.parse_message(parse_tlvs(rest)[2])

    async def read_list(self):
        """The items of the buddy list that the server keeps."""
        request, items = await self.bos.send_snac(0x13, 4), []
        while True:
            frame = await self.bos.frames.take(lambda frame: frame.snac == (0x13, 6) and frame.request == request, "the list")
            items += wire.parse_items(frame.data[3:-4])
            if not frame.has_more:
                return items

    async def enter_room(self):
        """The connection to the service's chat room."""
        line = await self._open_service(CHAT)
        self.services.append(line)
        return line

    async def sees(self, name):
        """Waits until this buddy has signed on."""
        await self.bos.frames.take(lambda frame: frame.snac == (3, 0xB)
                                   and wire.same_name(wire.parse_name(frame.data)[0], name), f"{name} to sign on")

    async def profile_of(self, name):
        tlvs = await self._about(name, 1)
        return tlvs[2].decode("latin-1")

    async def away_message_of(self, name):
        tlvs = await self._about(name, 2)
        return tlvs[4].decode("latin-1")

    async def set_profile(self, text):
        await self.bos.send_snac(2, 4, tlv(1, b'text/aolrtf; charset="us-ascii"') + tlv(2, text.encode("latin-1")))

    async def set_away(self, text):
        await self.bos.send_snac(2, 4, tlv(3, b'text/aolrtf; charset="us-ascii"') + tlv(4, text.encode("latin-1")))

    async def set_idle(self, seconds):
        await self.bos.send_snac(1, 0x11, struct.pack(">I", seconds))

    async def keep_alive(self):
        for line in [self.bos, *self.services]:
            await line.stream.send(wire.KEEP_ALIVE)

    async def sign_off(self):
        if self.bos:
            await self.bos.stream.send(SIGN_OFF)
        await self.close()

    async def close(self):
        for line in self._lines:
            await line.close()

    async def _authorise(self):
        """The BOS address (host, port) and the cookie that opens it."""
        line = await self._open(self._service)
        await line.hello()
        name = tlv(1, self.name.encode("latin-1"))
        key = await line.ask(0x17, 6, name, 7)
        if len(key) != 2 + struct.unpack_from(">H", key)[0]:
            raise wire.WireFault("the key is cut off")
        hashed = tlv(0x25, os.urandom(16))  # the service takes any password
        welcome = parse_tlvs(await line.ask(0x17, 2, name + hashed + tlv(3, b"sandbox client"), 3))
        await line.stream.send(SIGN_OFF)
        await line.close()
        return self._address(welcome), welcome[6]

    async def _open_service(self, family):
        redirect = parse_tlvs(await self.bos.ask(1, 4, struct.pack(">H", family), 5))
        line = await self._open(self._address(redirect))
        await line.hello(HELLO + tlv(6, redirect[6]))
        await line.take(1, 3)
        await line.ask(1, 6, b"", 7)
        await line.send_snac(1, 2)
        return line

    async def _about(self, name, wants):
        answer = await self.bos.ask(2, 0x15, struct.pack(">I", wants) + wire.pack_name(name), 6)
        return parse_tlvs(wire.parse_user_info(answer)[2])

    async def _open(self, address):
        reader, writer = await connect(self._via, *address)
        line = Line(wire.FrameStream(reader, writer, self._first_seq), self._on_frame)
        self._lines.append(line)
        return line

    @staticmethod
    def _address(tlvs):
        host, port = tlvs[5].decode().split(":")  # clients of that age know no IPv6
        return host, int(port)
