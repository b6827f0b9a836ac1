"""OSCAR on the wire: FLAP frames, SNACs, TLVs and the blocks made of them. All numbers are big-endian.

FLAP frame: "*", channel (1), sequence number (2), length (2), payload.
SNAC, the payload on channel 2: family (2), subtype (2), flags (2), request (4), data.
TLV: type (2), length (2), value.
"""
import asyncio
import socket
import struct
from dataclasses import dataclass

from .record import within

SIGN_ON, DATA, ERROR, SIGN_OFF, KEEP_ALIVE = 1, 2, 3, 4, 5
HELLO = b"\0\0\0\1"  # the protocol version, first thing on channel 1


class WireFault(Exception):
    """The other end broke the protocol: a wrong marker, channel or sequence number, or a cut-off frame."""


@dataclass
class Frame:
    channel: int
    seq: int
    payload: bytes

    @property
    def snac(self):
        """(family, subtype), or (0, 0) when the frame carries no SNAC."""
        if self.channel != DATA or len(self.payload) < 10:
            return 0, 0
        return struct.unpack_from(">HH", self.payload)

    @property
    def has_more(self):
        """Whether another SNAC of the same answer follows."""
        return self.payload[5] & 1

    @property
    def request(self):
        return struct.unpack_from(">I", self.payload, 6)[0]

    @property
    def data(self):
        return self.payload[10:]


def snac(family, subtype, data=b"", request=0, flags=0):
    return struct.pack(">HHHI", family, subtype, flags, request) + data


def tlv(kind, value=b""):
    return struct.pack(">HH", kind, len(value)) + value


def parse_tlvs(data):
    """The TLVs of a run of bytes as {type: value}; the first of a type counts."""
    found = {}
    while data:
        if len(data) < 4:
            raise WireFault(f"{len(data)} bytes where a TLV should be")
        kind, length = struct.unpack_from(">HH", data)
        if len(data) < 4 + length:
            raise WireFault(f"TLV {kind:#x} is shorter than the {length} bytes it announces")
        found.setdefault(kind, data[4:4 + length])
        data = data[4 + length:]
    return found


def pack_tlvs(tlvs):
    return b"".join(tlv(kind, value) for kind, value in tlvs.items())


def pack_name(name):
    raw = name.encode("latin-1")
    return bytes([len(raw)]) + raw


def parse_name(data):
    """A screen name behind its length byte, and what follows it."""
    length = data[0]
    if len(data) < 1 + length:
        raise WireFault("a screen name is cut off")
    return data[1:1 + length].decode("latin-1"), data[1 + length:]


def parse_user_info(data):
    """Name, {type: value} of the counted TLVs, and what follows the block."""
    name, rest = parse_name(data)
    _warning, count = struct.unpack_from(">HH", rest)
    rest = rest[4:]
    info = {}
    for _ in range(count):
        kind, length = struct.unpack_from(">HH", rest)
        if len(rest) < 4 + length:
            raise WireFault(f"TLV {kind:#x} about a user is shorter than the {length} bytes it announces")
        info[kind] = rest[4:4 + length]
        rest = rest[4 + length:]
    return name, info, rest


def parse_items(data):
    """The items of a buddy list as [(name, group, number, class, {type: value})], each by its lengths."""
    items = []
    while data:
        size = struct.unpack_from(">H", data)[0]
        name, rest = data[2:2 + size], data[2 + size:]
        group, number, kind, length = struct.unpack_from(">HHHH", rest)
        if len(rest) < 8 + length:
            raise WireFault(f"an item of the list is shorter than the {length} bytes it announces")
        items.append((name.decode("latin-1"), group, number, kind, parse_tlvs(rest[8:8 + length])))
        data = rest[8 + length:]
    return items


def pack_item(name, tlvs=b"", group=1, number=1, kind=0):
    raw = name.encode("latin-1")
    return struct.pack(">H", len(raw)) + raw + struct.pack(">HHHH", group, number, kind, len(tlvs)) + tlvs


def same_name(a, b):
    """Screen names are compared without blanks and case."""
    return a.replace(" ", "").lower() == b.replace(" ", "").lower()


def pack_message(text):
    """The value of an IM's TLV 2: a capability fragment, then the text fragment."""
    if text.isascii():
        charset, raw = 0, text.encode("ascii")
    else:
        charset, raw = 2, text.encode("utf-16-be")
    body = struct.pack(">HH", charset, 0) + raw
    return b"\x05\x01\x00\x01\x01" + b"\x01\x01" + struct.pack(">H", len(body)) + body


def parse_message(value):
    """The text of an IM's TLV 2."""
    while value:
        kind, _version, length = struct.unpack_from(">BBH", value)
        if len(value) < 4 + length:
            raise WireFault(f"a fragment of a message is shorter than the {length} bytes it announces")
        body, value = value[4:4 + length], value[4 + length:]
        if kind == 1:
            charset = struct.unpack_from(">H", body)[0]
            return body[4:].decode({0: "ascii", 2: "utf-16-be", 3: "latin-1"}[charset])
    return ""


def parse_rendezvous(value):
    """The TLVs of what TLV 5 of an IM proposes, behind step (2), cookie (8) and capability (16)."""
    if len(value) < 26:
        raise WireFault(f"a rendezvous of {len(value)} bytes")
    return parse_tlvs(value[26:])


class FrameStream:
    """Frames over one TCP connection, each checked strictly on arrival.

    Real servers write every field of a header by itself and clients write a frame at once; `piecewise` picks.
    With a pause between the pieces they are sure to arrive one by one.
    """

    def __init__(self, reader, writer, first_seq=0, piecewise=False, pause=0.0):
        self._reader, self._writer = reader, writer
        self._next_out, self._next_in = first_seq, None
        self._piecewise, self._pause = piecewise, pause
        self._sending = asyncio.Lock()  # frames of two senders must not mix between the pieces
        writer.get_extra_info("socket").setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    async def read(self):
        """The next frame, or None when the peer has ended the connection between two frames."""
        header = b""
        try:
            header = await self._reader.readexactly(6)
            marker, channel, seq, length = struct.unpack(">BBHH", header)
            if marker != 0x2A or not SIGN_ON <= channel <= KEEP_ALIVE:
                raise WireFault(f"no frame header: {header.hex(' ')}")
            if self._next_in is not None and seq != self._next_in:
                raise WireFault(f"sequence number {seq}, expected {self._next_in}")
            self._next_in = (seq + 1) & 0xFFFF
            return Frame(channel, seq, await self._reader.readexactly(length))
        except asyncio.IncompleteReadError as cut:
            if header or cut.partial:
                raise WireFault(f"cut off in mid-frame after {(header + cut.partial).hex(' ')}") from None
            return None
        except ConnectionError as broken:
            raise WireFault(f"connection broken: {broken}") from None

    async def send(self, channel, payload=b""):
        """Sends one frame; gives its sequence number."""
        async with self._sending:
            seq, self._next_out = self._next_out, (self._next_out + 1) & 0xFFFF
            header = struct.pack(">BBHH", 0x2A, channel, seq, len(payload))
            pieces = [header[0:1], header[1:2], header[2:4], header[4:6], payload]
            for piece in pieces if self._piecewise else [header + payload]:
                self._writer.write(piece)
                if self._pause:
                    await asyncio.sleep(self._pause)
            await within(self._writer.drain(), "the peer to read")
            return seq

    async def send_bare_goodbye(self):
        """Four bytes without a length field: how servers end the sessions of old clients."""
        async with self._sending:
            self._writer.write(struct.pack(">BBH", 0x2A, SIGN_OFF, self._next_out))
            await within(self._writer.drain(), "the peer to read")

    def write_raw(self, data):
        self._writer.write(data)

    async def close(self):
        try:
            self._writer.close()
            await within(self._writer.wait_closed(), "the peer to read what was sent before the end")
        except ConnectionError:
            pass  # the peer was faster
        except BaseException:
            self._writer.transport.abort()
            raise

    def reset(self):
        """Breaks the connection: the peer sees a reset instead of an end."""
        connection = self._writer.get_extra_info("socket")
        connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self._writer.transport.abort()
