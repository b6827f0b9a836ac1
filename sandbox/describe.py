"""One readable line for a frame, for people who watch a session."""
import re
import struct

from . import wire

NAMES = {
    (0x01, 0x02): "client is ready",
    (0x01, 0x03): "families of the service",
    (0x01, 0x04): "asks for a service connection",
    (0x01, 0x05): "where the service connection is",
    (0x01, 0x06): "asks for the rate limits",
    (0x01, 0x07): "rate limits",
    (0x01, 0x08): "accepts the rate limits",
    (0x01, 0x0E): "asks about itself",
    (0x01, 0x17): "versions of the client",
    (0x01, 0x18): "versions of the service",
    (0x02, 0x02): "asks for the profile limits",
    (0x02, 0x03): "profile limits",
    (0x03, 0x02): "asks for the buddy limits",
    (0x03, 0x03): "buddy limits",
    (0x03, 0x04): "adds buddies",
    (0x04, 0x04): "asks for the message limits",
    (0x04, 0x05): "message limits",
    (0x09, 0x02): "asks for the privacy limits",
    (0x09, 0x03): "privacy limits",
    (0x13, 0x08): "adds to the buddy list",
    (0x13, 0x09): "changes the buddy list",
    (0x13, 0x0E): "buddy list is changed",
    (0x17, 0x07): "key for the password",
}
CHANNELS = {wire.SIGN_ON: "hello", wire.ERROR: "error", wire.SIGN_OFF: "goodbye", wire.KEEP_ALIVE: "keep-alive"}


def describe(frame):
    if frame.channel != wire.DATA:
        return CHANNELS.get(frame.channel, f"channel {frame.channel}")
    family, subtype = frame.snac
    try:
        text = _contents(family, subtype, frame.data)
    except (wire.WireFault, struct.error, IndexError, KeyError, ValueError):
        text = "malformed"
    return f"SNAC({family:02X},{subtype:02X}) {text}"


def _contents(family, subtype, data):
    kind = (family, subtype)
    if kind in ((0x17, 2), (0x17, 6)):
        what = "signs on" if subtype == 2 else "asks for a key"
        return f"{wire.parse_tlvs(data)[1].decode('latin-1')} {what}"
    if kind == (0x17, 3):
        tlvs = wire.parse_tlvs(data)
        return f"welcome {tlvs[1].decode('latin-1')}, continue at {tlvs[5].decode()}"
    if kind == (1, 0xF):
        return f"you are {wire.parse_name(data)[0]}"
    if kind == (1, 0x11):
        return f"idle for {struct.unpack('>I', data)[0]} s"
    if kind == (2, 4):
        return _location(wire.parse_tlvs(data))
    if kind in ((2, 5), (2, 0x15)):
        return f"asks about {wire.parse_name(data[2 if subtype == 5 else 4:])[0]}"
    if kind == (2, 6):
        name, _info, rest = wire.parse_user_info(data)
        return f"about {name}: {_location(wire.parse_tlvs(rest))}"
    if kind == (3, 0xB):
        return f"{wire.parse_name(data)[0]} is here"
    if kind == (3, 0xC):
        return f"{wire.parse_name(data)[0]} has left"
    if kind == (4, 6):
        name, rest = wire.parse_name(data[10:])
        return f'IM to {name}: "{_plain(wire.parse_message(wire.parse_tlvs(rest)[2]))}"'
    if kind == (4, 7):
        name, _info, rest = wire.parse_user_info(data[10:])
        return f'IM from {name}: "{_plain(wire.parse_message(wire.parse_tlvs(rest)[2]))}"'
    if kind == (4, 0xC):
        return f"IM to {wire.parse_name(data[10:])[0]} accepted"
    if kind in ((0xE, 5), (0xE, 6)):
        return f'in the room: "{_plain(wire.parse_tlvs(wire.parse_tlvs(data[10:])[5])[1].decode("latin-1"))}"'
    return NAMES.get(kind, "error" if subtype == 1 else f"{len(data)} bytes")


def _location(tlvs):
    parts = []
    if 2 in tlvs:
        parts.append(f'profile "{_plain(tlvs[2].decode("latin-1"))}"')
    if 4 in tlvs:
        parts.append(f'away "{_plain(tlvs[4].decode("latin-1"))}"' if tlvs[4] else "no longer away")
    return ", ".join(parts) or "no profile"


def _plain(html):
    text = re.sub("<[^>]*>", "", html)
    return text if len(text) <= 60 else text[:57] + "..."
