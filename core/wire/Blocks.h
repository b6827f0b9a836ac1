// The blocks and the TLVs that several SNACs are made of. See core/wire/Layout.h for the words.
#pragma once

#include "core/wire/Layout.h"

namespace wire {

// Lists of numbers, names and such: what stands again and again.
inline constexpr Field kFamily[] = {U16("family")};
inline constexpr Field kVersion[] = {U16("family"), U16("version")};
inline constexpr Field kTool[] = {U16("family"), U16("version"), U16("tool"), U16("tool version")};
inline constexpr Field kRateClassNumber[] = {U16("rate class")};
inline constexpr Field kSnacKind[] = {U16("family"), U16("subtype")};
inline constexpr Field kName[] = {Text8("screen name")};
inline constexpr Field kNumber[] = {U16("number")};
inline constexpr Field kCode[] = {U16("code")};
inline constexpr Field kCapability[] = {Bytes("capability", 16)};
inline constexpr Field kShortCapability[] = {Bytes("short capability", 2)};

// What went wrong.
inline constexpr Field kErrorTlvs[] = {
    Tlv(0x04, Text("web page")),
    Tlv(0x08, U16("detailed code")),
    Tlv(0x1B, Text("data")),
};

// Limits on what a client may send, by class of SNACs; times in milliseconds. Clients that know version 3 of
// family 1 are told the last two fields.
inline constexpr Field kRateClass[] = {
    U16("rate class"),  U32("window size"),      U32("clear level"),   U32("alert level"),
    U32("limit level"), U32("disconnect level"), U32("current level"), U32("maximum level"),
    U32("time passed"), U8("dropping"),
};
inline constexpr Field kOldRateClass[] = {
    U16("rate class"),  U32("window size"),      U32("clear level"),   U32("alert level"),
    U32("limit level"), U32("disconnect level"), U32("current level"), U32("maximum level"),
};
inline constexpr Field kRateGroup[] = {U16("rate class"), Count16("SNAC", kSnacKind)};

// A picture, sound or text that the server keeps, by the hash of its contents.
inline constexpr Field kIconId[] = {U16("kind"), U8("flags"), Bytes8("hash")};

// How a client can be reached directly.
inline constexpr Field kDirectConnection[] = {
    Address("address inside"), U32("port"),     U8("kind"),      U16("protocol version"),
    U32("direct cookie"),      U32("web port"), U32("features"), U32("times"),
};

// User information: how the server tells about somebody.
inline constexpr Field kUserTlvs[] = {
    Tlv(0x01, Number("user class")),
    Tlv(0x02, U32("account made")),
    Tlv(0x03, U32("signed on since")),
    Tlv(0x04, U16("idle minutes")),
    Tlv(0x05, U32("member since")),
    Tlv(0x06, U32("status")),
    Tlv(0x0A, Address("address")),
    Tlv(0x0C, Group("direct connection", kDirectConnection)),
    Tlv(0x0D, Each("capability", kCapability)),
    Tlv(0x0F, U32("seconds on line")),
    Tlv(0x10, U32("seconds on line")),
    Tlv(0x14, U8("instance")),
    Tlv(0x19, Each("short capability", kShortCapability)),
    Tlv(0x1D, Each("icon", kIconId)),
    Tlv(0x1E, Number("subscriptions")),
    Tlv(0x1F, Number("more user class")),
    Tlv(0x23, U32("news changed")),
    Tlv(0x26, U32("profile changed")),
    Tlv(0x27, U32("away since")),
    Tlv(0x2A, Text("country")),
};
inline constexpr Field kUser[] = {
    Text8("screen name"),
    U16("warning level"),
    CountedTlvs("user information", kUserTlvs),
};

// Profile and away message.
inline constexpr Field kLocateTlvs[] = {
    Tlv(0x01, Text("profile type")),
    Tlv(0x02, Text("profile")),
    Tlv(0x03, Text("away type")),
    Tlv(0x04, Text("away message")),
    Tlv(0x05, Each("capability", kCapability)),
    Tlv(0x06, Rest("certificates")),
    Tlv(0x0A, U32("profile changed")),
};

// An entry of the directory of people.
inline constexpr Field kDirectoryTlvs[] = {
    Tlv(0x01, Text("first name")),    Tlv(0x02, Text("last name")),      Tlv(0x03, Text("middle name")),
    Tlv(0x04, Text("maiden name")),   Tlv(0x05, Text("e-mail address")), Tlv(0x06, Text("country")),
    Tlv(0x07, Text("state")),         Tlv(0x08, Text("city")),           Tlv(0x09, Text("screen name")),
    Tlv(0x0A, U16("kind of search")), Tlv(0x0B, Text("interest")),       Tlv(0x0C, Text("nickname")),
    Tlv(0x0D, Text("postal code")),   Tlv(0x1A, U16("may be found")),    Tlv(0x1C, Text("region")),
    Tlv(0x21, Text("street")),
};
inline constexpr Field kDirectoryEntry[] = {CountedTlvs("entry", kDirectoryTlvs)};

// The text of an instant message. A fragment is identifier (1), version (1), length (2), data, so it reads
// like a TLV whose type is identifier and version.
inline constexpr Field kMessageText[] = {U16("character set"), U16("character subset"), Text("text")};
inline constexpr Field kMessageFragments[] = {
    Tlv(0x0101, Group("message", kMessageText)),
    Tlv(0x0501, Rest("needed features")),
};

// What two clients agree on: files, direct messages, chat rooms. What it is about decides what the contents
// are.
inline constexpr char kChatCapability[] = "\x74\x8F\x24\x20\x62\x87\x11\xD1\x82\x22\x44\x45\x53\x54\0\0";
inline constexpr char kFileCapability[] = "\x09\x46\x13\x43\x4C\x7F\x11\xD1\x82\x22\x44\x45\x53\x54\0\0";
inline constexpr char kIconCapability[] = "\x09\x46\x13\x46\x4C\x7F\x11\xD1\x82\x22\x44\x45\x53\x54\0\0";
inline constexpr char kListCapability[] = "\x09\x46\x13\x4B\x4C\x7F\x11\xD1\x82\x22\x44\x45\x53\x54\0\0";
inline constexpr Field kRoomId[] = {U16("exchange"), Text8("room cookie"), U16("room instance")};
inline constexpr Field kSentFile[] = {U16("one or several"), U16("files"), U32("bytes"), Text("file name")};
inline constexpr Field kSentIcon[] = {U16("unused"), U16("checksum"), U32("size"), U32("time"), Rest("icon")};
inline constexpr Field kSentName[] = {Text16("screen name")};
inline constexpr Field kSentGroup[] = {Text16("group"), Count16("screen name", kSentName)};
inline constexpr Field kRendezvousTlvs[] = {
    Tlv(0x02, Address("proposed address")),
    Tlv(0x03, Address("own address")),
    Tlv(0x04, Address("address as seen")),
    Tlv(0x05, U16("port")),
    Tlv(0x0A, U16("attempt")),
    Tlv(0x0B, U16("reason")),
    Tlv(0x0C, Text("invitation")),
    Tlv(0x0D, Text("character set")),
    Tlv(0x0E, Text("language")),
    Tlv(0x0F, Flag("server is to check")),
    Tlv(0x10, Flag("through a proxy")),
    Tlv(0x12, U16("highest version")),
    Tlv(0x13, U16("lowest version")),
    Tlv(0x16, Bytes("address check", 4)),
    Tlv(0x17, Bytes("port check", 2)),
    In(kChatCapability, Tlv(0x2711, Group("room", kRoomId))),
    In(kFileCapability, Tlv(0x2711, Group("file", kSentFile))),
    In(kIconCapability, Tlv(0x2711, Group("icon", kSentIcon))),
    In(kListCapability, Tlv(0x2711, Each("buddies", kSentGroup))),
    Tlv(0x2711, Rest("contents")),
    Tlv(0x2712, Text("character set of the contents")),
};
inline constexpr Field kRendezvous[] = {
    U16("step"),
    Bytes("message cookie", 8),
    Bytes("capability", kCapabilitySize),
    Tlvs("proposal", kRendezvousTlvs),
};

// An instant message. Message channel 1 is text (TLV 2), channel 2 a rendezvous (TLV 5).
inline constexpr Field kIconNews[] = {U32("size"), U16("kind"), U16("checksum"), U32("time")};
inline constexpr Field kMessageTlvs[] = {
    Tlv(0x02, Tlvs("message", kMessageFragments)),
    Tlv(0x03, Flag("asks for an acknowledgement")),
    Tlv(0x04, Flag("automatic reply")),
    Tlv(0x05, Group("rendezvous", kRendezvous)),
    Tlv(0x06, Flag("to be stored")),
    Tlv(0x08, Group("has an icon", kIconNews)),
    Tlv(0x09, Flag("asks for the icon")),
    Tlv(0x0B, Flag("tells when typing")),
    Tlv(0x16, U32("sent")),
};

inline constexpr Field kMissedMessages[] = {
    U16("message channel"),
    Group("sender", kUser),
    U16("messages"),
    U16("reason"),
};

// Chat rooms.
inline constexpr Field kRoomTlvs[] = {
    Tlv(0x02, U16("class")),
    Tlv(0x03, U8("most rooms")),
    Tlv(0x04, U16("longest name")),
    Tlv(0x6A, Text("full name")),
    Tlv(0xC9, U16("flags")),
    Tlv(0xCA, U32("made")),
    Tlv(0xD1, U16("longest message")),
    Tlv(0xD2, U16("most people")),
    Tlv(0xD3, Text("room name")),
    Tlv(0xD5, U8("who may make rooms")),
    Tlv(0xD6, Text("character set")),
    Tlv(0xD7, Text("language")),
    Tlv(0xD8, Text("character set")),
    Tlv(0xD9, Text("language")),
    Tlv(0xDA, U16("longest visible message")),
};
inline constexpr Field kRoom[] = {
    U16("exchange"), Text8("room cookie"), U16("room instance"), U8("detail"), CountedTlvs("room", kRoomTlvs),
};
inline constexpr Field kExchange[] = {U16("exchange"), CountedTlvs("rooms", kRoomTlvs)};
inline constexpr Field kRoomsTlvs[] = {
    Tlv(0x01, Flag("go elsewhere")),
    Tlv(0x02, U8("most rooms")),
    Tlv(0x03, Group("exchange", kExchange)),
    Tlv(0x04, Group("room", kRoom)),
};
inline constexpr Field kChatTextTlvs[] = {
    Tlv(0x01, Text("text")), Tlv(0x02, Text("character set")), Tlv(0x03, Text("language")),
    Tlv(0x04, Text("type")), Tlv(0x05, Text("encoding")),
};
inline constexpr Field kChatTlvs[] = {
    Tlv(0x01, Flag("to everybody")),    Tlv(0x02, Text("whispered to")),
    Tlv(0x03, Group("sender", kUser)),  Tlv(0x05, Tlvs("chat message", kChatTextTlvs)),
    Tlv(0x06, Flag("is to come back")),
};

// The buddy list that the server keeps.
inline constexpr Field kItemIcon[] = {U8("flags"), Bytes8("hash")};
inline constexpr Field kItemTlvs[] = {
    Tlv(0x66, Flag("awaits permission")), Tlv(0xC8, Each("member", kNumber)),
    Tlv(0xC9, Number("preferences")),     Tlv(0xCA, U8("who may see the user")),
    Tlv(0xCB, U32("which classes may")),  Tlv(0xD5, Group("icon", kItemIcon)),
    Tlv(0x0131, Text("nickname")),        Tlv(0x0137, Text("e-mail address")),
    Tlv(0x013A, Text("telephone")),       Tlv(0x013C, Text("comment")),
    Tlv(0x013D, Number("alerts")),        Tlv(0x013E, Text("sound")),
    Tlv(0x0145, U32("first message")),
};
inline constexpr Field kItem[] = {
    Text16("name"), U16("group"), U16("number"), U16("class"), Tlvs16("item", kItemTlvs),
};
inline constexpr Field kListLimitsTlvs[] = {
    Tlv(0x02, Number("flags")),
    Tlv(0x03, Number("flags")),
    Tlv(0x04, Each("most items of a class", kNumber)),
};

// Sign-on, in SNACs of family 0x17, in the greeting and at a connection's end.
inline constexpr Field kSignOnTlvs[] = {
    Tlv(0x01, Text("screen name")),
    Tlv(0x02, Secret(Rest("password"))),
    Tlv(0x03, Text("client")),
    Tlv(0x04, Text("web page")),
    Tlv(0x05, Text("address")),
    Tlv(0x06, Secret(Rest("cookie"))),
    Tlv(0x08, U16("error")),
    Tlv(0x09, U16("reason of the end")),
    Tlv(0x0B, Text("web page")),
    Tlv(0x0E, Text("country")),
    Tlv(0x0F, Text("language")),
    Tlv(0x11, Text("e-mail address")),
    Tlv(0x13, U16("who may find the address")),
    Tlv(0x14, U32("distribution")),
    Tlv(0x16, U16("client number")),
    Tlv(0x17, U16("major version")),
    Tlv(0x18, U16("minor version")),
    Tlv(0x19, U16("lesser version")),
    Tlv(0x1A, U16("build")),
    Tlv(0x25, Secret(Rest("password hash"))),
    Tlv(0x40, U32("newest beta build")),
    Tlv(0x41, Text("newest beta's page")),
    Tlv(0x42, Text("about the newest beta")),
    Tlv(0x43, Text("newest beta")),
    Tlv(0x44, U32("newest build")),
    Tlv(0x45, Text("newest version's page")),
    Tlv(0x46, Text("about the newest version")),
    Tlv(0x47, Text("newest version")),
    Tlv(0x4A, U8("places")),
    Tlv(0x4C, Flag("hash is of the hash")),
    Tlv(0x54, Text("page to change the password")),
    Tlv(0x8E, U8("encryption")),
};
inline constexpr Field kServiceTlvs[] = {
    Tlv(0x01, Group("room", kRoomId)),          Tlv(0x05, Text("address")),
    Tlv(0x06, Secret(Rest("cookie"))),          Tlv(0x0D, U16("family")),
    Tlv(0x8D, Text("name in the certificate")), Tlv(0x8E, U8("encryption")),
};

// The account itself.
inline constexpr Field kAccountTlvs[] = {
    Tlv(0x01, Text("screen name")),
    Tlv(0x02, Secret(Rest("new password"))),
    Tlv(0x04, Text("web page")),
    Tlv(0x08, U16("error")),
    Tlv(0x11, Text("e-mail address")),
    Tlv(0x12, Secret(Rest("old password"))),
    Tlv(0x13, U16("who may find the address")),
};

// TLVs by number only.
inline constexpr Field kLimitTlvs[] = {
    Tlv(0x01, Number("limit 1")), Tlv(0x02, Number("limit 2")), Tlv(0x03, Number("limit 3")),
    Tlv(0x04, Number("limit 4")), Tlv(0x05, Number("limit 5")), Tlv(0x06, Number("limit 6")),
    Tlv(0x07, Number("limit 7")), Tlv(0x0B, Number("flags")),
};

inline constexpr Field kNewsTlvs[] = {Tlv(0x0B, Text("message"))};
inline constexpr Field kFoundTlvs[] = {Tlv(0x01, Text("screen name"))};
inline constexpr Field kInviteTlvs[] = {Tlv(0x11, Text("e-mail address")), Tlv(0x15, Text("invitation"))};
inline constexpr Field kPopupTlvs[] = {
    Tlv(0x01, Text("text")),  Tlv(0x02, Text("web page")), Tlv(0x03, U16("width")),
    Tlv(0x04, U16("height")), Tlv(0x05, U16("delay")),
};
// The data hold passwords in some of its kinds.
inline constexpr Field kOtherNetworkRequest[] = {
    Little(U16("length")), Little(U32("account")),       Little(U16("kind")),
    Little(U16("number")), Secret(Rest("request data")),
};
inline constexpr Field kOtherNetworkTlvs[] = {Tlv(0x01, Group("request", kOtherNetworkRequest))};
inline constexpr Field kMailTlvs[] = {
    Tlv(0x07, Text("text")),
    Tlv(0x09, Text("web page")),
    Tlv(0x80, Number("unread letters")),
    Tlv(0x81, Number("has unread letters")),
    Tlv(0x82, Text("domain")),
    Tlv(0x84, Number("flag")),
};

// What every SNAC begins with, and what stands before its data where its flags say so (kHasVersion).
inline constexpr std::uint16_t kHasVersion = 0x8000;
inline constexpr Field kSnacHeader[] = {U16("family"), U16("subtype"), U16("flags"), U32("request")};
inline constexpr Field kVersionTlvs[] = {Tlv(0x01, U16("family version"))};
inline constexpr Field kVersionBlock[] = {Tlvs16("version", kVersionTlvs)};

}  // namespace wire
