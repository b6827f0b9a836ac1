#include "core/wire/Snacs.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/wire/Blocks.h"

namespace wire {
namespace {

struct Family {
    std::uint16_t number;
    const char* name;
};
constexpr Family kFamilies[] = {
    {0x01, "service"},        {0x02, "profiles"},      {0x03, "buddies"},       {0x04, "messages"},
    {0x05, "advertisements"}, {0x06, "invitations"},   {0x07, "account"},       {0x08, "pop-ups"},
    {0x09, "privacy"},        {0x0A, "look-up"},       {0x0B, "usage"},         {0x0C, "translation"},
    {0x0D, "chat rooms"},     {0x0E, "chat"},          {0x0F, "people search"}, {0x10, "icons"},
    {0x13, "buddy list"},     {0x15, "other network"}, {0x17, "sign-on"},       {0x18, "mail"}};

constexpr Snac kSnacs[] = {
    // The other channels of a connection; their payloads are no SNACs.
    {kNoSnac, 0x01, "greeting", {U32("protocol version"), Tlvs("sign-on", kSignOnTlvs)}},
    {kNoSnac, 0x03, "error", {Rest("contents")}},
    {kNoSnac, 0x04, "end", {Tlvs("why", kSignOnTlvs)}},
    {kNoSnac, 0x05, "keep-alive", {Rest("contents")}},

    // 01: what every connection has: versions, rates, the user's own state.
    {0x01, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x01, 0x02, "client is ready", {Each("tool", kTool)}},
    {0x01, 0x03, "families of the server", {Each("family", kFamily)}},
    {0x01, 0x04, "asks for a service", {U16("family"), Tlvs("details", kServiceTlvs)}},
    {0x01, 0x05, "where the service is", {Tlvs("service", kServiceTlvs)}},
    {0x01, 0x06, "asks for the rates", {}},
    {0x01, 0x07, "rates", {Count16("rate class", kRateClass), Each("rate group", kRateGroup)}},
    {0x01, 0x07, "rates", {Count16("rate class", kOldRateClass), Each("rate group", kRateGroup)}},
    {0x01, 0x08, "accepts the rates", {Each("rate class", kRateClassNumber)}},
    {0x01, 0x09, "gives up rates", {Each("rate class", kRateClassNumber)}},
    {0x01, 0x0A, "rates have changed", {U16("what"), Each("rate class", kRateClass)}},
    {0x01, 0x0A, "rates have changed", {U16("what"), Each("rate class", kOldRateClass)}},
    {0x01, 0x0B, "pause", {Each("family", kFamily)}},
    {0x01, 0x0C, "pauses", {Each("family", kFamily)}},
    {0x01, 0x0D, "resume", {Each("family", kFamily)}},
    {0x01, 0x0E, "asks about itself", {}},
    {0x01, 0x0F, "about the user", {Each("user", kUser)}},
    {0x01, 0x10, "warning", {U16("new level"), Group("by", kUser)}},
    {0x01, 0x11, "idle time", {U32("seconds")}},
    {0x01, 0x12, "go to another server", {Count16("family", kFamily), Tlvs("service", kServiceTlvs)}},
    {0x01, 0x13, "message of the day", {U16("kind"), Tlvs("news", kNewsTlvs)}},
    {0x01, 0x14, "what others may see", {U32("flags")}},
    {0x01, 0x15, "web pages", {Rest("pages")}},
    {0x01, 0x16, "nothing", {}},
    {0x01, 0x17, "versions of the client", {Each("version", kVersion)}},
    {0x01, 0x18, "versions of the server", {Each("version", kVersion)}},
    {0x01, 0x1E, "status", {Tlvs("status", kUserTlvs)}},
    {0x01, 0x1F, "who are you", {U32("offset"), U32("length"), Rest("question")}},
    {0x01, 0x20, "this client", {Rest("answer")}},
    {0x01, 0x21, "own icons", {Each("icon", kIconId)}},

    // 02: profiles and away messages.
    {0x02, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x02, 0x02, "asks for the limits", {}},
    {0x02, 0x03, "limits", {Tlvs("limits", kLimitTlvs)}},
    {0x02, 0x04, "sets profile or away", {Tlvs("texts", kLocateTlvs)}},
    {0x02, 0x05, "asks about a user", {U16("what"), Text8("screen name")}},
    {0x02, 0x06, "about a user", {Group("user", kUser), Tlvs("texts", kLocateTlvs)}},
    {0x02, 0x07, "watches users", {Each("screen name", kName)}},
    {0x02, 0x08, "watched users", {Each("screen name", kName)}},
    {0x02, 0x09, "sets directory entry", {Tlvs("entry", kDirectoryTlvs)}},
    {0x02, 0x0A, "directory entry is set", {U16("result")}},
    {0x02, 0x0B, "asks for directory entry", {Text8("screen name")}},
    {0x02, 0x0C, "directory entry", {U16("result"), CountedTlvs("entry", kDirectoryTlvs)}},
    {0x02, 0x0F, "sets interests", {Tlvs("interests", kDirectoryTlvs)}},
    {0x02, 0x10, "interests are set", {U16("result")}},
    {0x02, 0x11, "asks for interests", {Text8("screen name")}},
    {0x02, 0x12, "interests", {Rest("interests")}},
    {0x02, 0x15, "asks about a user", {U32("what"), Text8("screen name")}},

    // 03: who is here.
    {0x03, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x03, 0x02, "asks for the limits", {Tlvs("flags", kLimitTlvs)}},
    {0x03, 0x03, "limits", {Tlvs("limits", kLimitTlvs)}},
    {0x03, 0x04, "adds buddies", {Each("screen name", kName)}},
    {0x03, 0x05, "removes buddies", {Each("screen name", kName)}},
    {0x03, 0x06, "asks who watches", {}},
    {0x03, 0x07, "who watches", {Each("screen name", kName)}},
    {0x03, 0x08, "watches watchers", {Rest("contents")}},
    {0x03, 0x09, "a watcher", {Rest("contents")}},
    {0x03, 0x0A, "refused buddies", {Each("screen name", kName)}},
    {0x03, 0x0B, "a buddy is here", {Each("user", kUser)}},
    {0x03, 0x0C, "a buddy has left", {Each("user", kUser)}},
    {0x03, 0x0F, "adds buddies for now", {Each("screen name", kName)}},
    {0x03, 0x10, "removes buddies for now", {Each("screen name", kName)}},

    // 04: instant messages.
    {0x04, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x04,
     0x02,
     "sets the limits",
     {U16("message channel"), U32("flags"), U16("longest message"), U16("sender's most warning"),
      U16("own most warning"), U32("least milliseconds between")}},
    {0x04, 0x03, "resets the limits", {U16("message channel")}},
    {0x04, 0x04, "asks for the limits", {}},
    {0x04,
     0x05,
     "limits",
     {U16("message channels"), U32("flags"), U16("longest message"), U16("sender's most warning"),
      U16("own most warning"), U32("least milliseconds between")}},
    {0x04,
     0x06,
     "message to",
     {Bytes("message cookie", 8), U16("message channel"), Text8("screen name"),
      Tlvs("message", kMessageTlvs)}},
    {0x04,
     0x07,
     "message from",
     {Bytes("message cookie", 8), U16("message channel"), Group("sender", kUser),
      Tlvs("message", kMessageTlvs)}},
    {0x04, 0x08, "warns", {U16("anonymous"), Text8("screen name")}},
    {0x04, 0x09, "has warned", {U16("more by"), U16("new level")}},
    {0x04, 0x0A, "messages not delivered", {Each("sender", kMissedMessages)}},
    {0x04,
     0x0B,
     "answer of a client",
     {Bytes("message cookie", 8), U16("message channel"), Text8("screen name"), U16("reason"),
      Rest("contents")}},
    {0x04,
     0x0C,
     "message accepted",
     {Bytes("message cookie", 8), U16("message channel"), Text8("screen name")}},
    {0x04, 0x10, "asks for stored messages", {}},
    {0x04,
     0x14,
     "typing",
     {Bytes("message cookie", 8), U16("message channel"), Text8("screen name"), U16("state")}},
    {0x04, 0x17, "end of the stored messages", {}},

    // 05 to 08: advertisements, invitations, the account, pop-ups.
    {0x05, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x05, 0x02, "asks for an advertisement", {Rest("request")}},
    {0x05, 0x03, "advertisement", {Rest("contents")}},
    {0x06, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x06, 0x02, "invites a friend", {Tlvs("invitation", kInviteTlvs)}},
    {0x06, 0x03, "friend is invited", {}},
    {0x07, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x07, 0x02, "asks about the account", {Tlvs("questions", kAccountTlvs)}},
    {0x07, 0x03, "about the account", {U16("permissions"), CountedTlvs("account", kAccountTlvs)}},
    {0x07, 0x04, "changes the account", {Tlvs("account", kAccountTlvs)}},
    {0x07, 0x05, "account is changed", {U16("permissions"), CountedTlvs("account", kAccountTlvs)}},
    {0x07, 0x06, "confirms the account", {}},
    {0x07, 0x07, "account is confirmed", {U16("result"), Tlvs("details", kAccountTlvs)}},
    {0x07, 0x08, "removes the account", {Rest("contents")}},
    {0x07, 0x09, "account is removed", {Rest("contents")}},
    {0x08, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x08, 0x02, "pop-up", {Tlvs("pop-up", kPopupTlvs)}},

    // 09: who may see the user.
    {0x09, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x09, 0x02, "asks for the limits", {}},
    {0x09, 0x03, "limits", {Tlvs("limits", kLimitTlvs)}},
    {0x09, 0x04, "which classes may see the user", {U32("classes")}},
    {0x09, 0x05, "allows users", {Each("screen name", kName)}},
    {0x09, 0x06, "allows no longer", {Each("screen name", kName)}},
    {0x09, 0x07, "blocks users", {Each("screen name", kName)}},
    {0x09, 0x08, "blocks no longer", {Each("screen name", kName)}},
    {0x09, 0x09, "list refused", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x09, 0x0A, "allows users for now", {Each("screen name", kName)}},
    {0x09, 0x0B, "allows no longer for now", {Each("screen name", kName)}},

    // 0A to 0C: users by their e-mail address, usage, translation.
    {0x0A, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x0A, 0x02, "who has this address", {Text("e-mail address")}},
    {0x0A, 0x03, "who has the address", {Tlvs("found", kFoundTlvs)}},
    {0x0B, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x0B, 0x02, "how often to report", {U16("hours")}},
    {0x0B, 0x03, "usage", {Rest("report")}},
    {0x0B, 0x04, "usage is noted", {}},
    {0x0C, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x0C, 0x02, "asks for a translation", {Rest("request")}},
    {0x0C, 0x03, "translation", {Rest("answer")}},

    // 0D: looking for chat rooms and making them.
    {0x0D, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x0D, 0x02, "asks for the limits", {}},
    {0x0D, 0x03, "asks for an exchange", {U16("exchange")}},
    {0x0D,
     0x04,
     "asks about a room",
     {U16("exchange"), Text8("room cookie"), U16("room instance"), U8("detail")}},
    {0x0D,
     0x05,
     "asks more about a room",
     {U16("exchange"), Text8("room cookie"), U16("room instance"), U8("detail")}},
    {0x0D, 0x06, "asks who is in a room", {U16("exchange"), Text8("room cookie"), U16("room instance")}},
    {0x0D, 0x07, "looks for a room", {Tlvs("room", kRoomTlvs)}},
    {0x0D, 0x08, "makes a room", {Group("room", kRoom)}},
    {0x0D, 0x09, "about rooms", {Tlvs("rooms", kRoomsTlvs)}},

    // 0E: in a chat room.
    {0x0E, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x0E, 0x02, "about the room", {Group("room", kRoom)}},
    {0x0E, 0x03, "has entered", {Each("user", kUser)}},
    {0x0E, 0x04, "has left", {Each("user", kUser)}},
    {0x0E,
     0x05,
     "says in the room",
     {Bytes("message cookie", 8), U16("message channel"), Tlvs("message", kChatTlvs)}},
    {0x0E,
     0x06,
     "said in the room",
     {Bytes("message cookie", 8), U16("message channel"), Tlvs("message", kChatTlvs)}},
    {0x0E, 0x07, "warns", {U16("anonymous"), Text8("screen name")}},
    {0x0E, 0x08, "has warned", {U16("more by"), U16("new level")}},

    // 0F and 10: the directory of people; icons.
    {0x0F, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x0F, 0x02, "looks for people", {Tlvs("search", kDirectoryTlvs)}},
    {0x0F, 0x03, "found people", {U16("result"), U16("unused"), Count16("person", kDirectoryEntry)}},
    {0x0F, 0x04, "asks for interests", {}},
    {0x0F, 0x05, "interests", {Rest("interests")}},
    {0x10, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x10, 0x02, "stores an icon", {U16("kind"), Bytes16("icon")}},
    {0x10, 0x03, "icon is stored", {U8("result"), Group("icon", kIconId)}},
    {0x10, 0x04, "asks for an icon", {Text8("screen name"), Count8("icon", kIconId)}},
    {0x10, 0x05, "icon", {Text8("screen name"), Group("id", kIconId), Bytes16("icon")}},
    {0x10, 0x06, "asks for an icon", {Text8("screen name"), Count8("icon", kIconId)}},
    {0x10,
     0x07,
     "icon",
     {Text8("screen name"), Group("id", kIconId), U8("result"), Group("id found", kIconId), Bytes16("icon")}},

    // 13: the buddy list that the server keeps.
    {0x13, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x13, 0x02, "asks for the limits", {Tlvs("flags", kLimitTlvs)}},
    {0x13, 0x03, "limits", {Tlvs("limits", kListLimitsTlvs)}},
    {0x13, 0x04, "asks for the list", {}},
    {0x13, 0x05, "asks for a newer list", {U32("time"), U16("items")}},
    {0x13, 0x06, "the list", {U8("version"), Count16("item", kItem), U32("time")}},
    {0x13, 0x07, "uses the list", {}},
    {0x13, 0x08, "adds items", {Each("item", kItem)}},
    {0x13, 0x09, "changes items", {Each("item", kItem)}},
    {0x13, 0x0A, "removes items", {Each("item", kItem)}},
    {0x13, 0x0E, "done", {Each("code", kCode)}},
    {0x13, 0x0F, "the list has not changed", {U32("time"), U16("items")}},
    {0x13, 0x11, "begins a change", {Rest("flags")}},
    {0x13, 0x12, "ends a change", {}},
    {0x13, 0x14, "permits being added", {Text8("screen name"), Text16("why"), U16("flags")}},
    {0x13, 0x15, "may be added", {Text8("screen name"), Text16("why"), U16("flags")}},
    {0x13, 0x16, "takes itself off a list", {Text8("screen name")}},
    {0x13, 0x18, "asks for permission", {Text8("screen name"), Text16("why"), U16("flags")}},
    {0x13, 0x19, "somebody asks for permission", {Text8("screen name"), Text16("why"), U16("flags")}},
    {0x13, 0x1A, "answers a request", {Text8("screen name"), U8("permitted"), Text16("why"), U16("flags")}},
    {0x13, 0x1B, "request is answered", {Text8("screen name"), U8("permitted"), Text16("why"), U16("flags")}},
    {0x13, 0x1C, "somebody has added the user", {Text8("screen name")}},

    // 15: another network's requests, little-endian inside.
    {0x15, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x15, 0x02, "request", {Tlvs("request", kOtherNetworkTlvs)}},
    {0x15, 0x03, "answer", {Tlvs("answer", kOtherNetworkTlvs)}},

    // 17: sign-on.
    {0x17, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x17, 0x02, "signs on", {Tlvs("sign-on", kSignOnTlvs)}},
    {0x17, 0x03, "sign-on is answered", {Tlvs("answer", kSignOnTlvs)}},
    {0x17, 0x04, "makes an account", {Secret(Rest("account"))}},
    {0x17, 0x05, "account is made", {Secret(Rest("account"))}},
    {0x17, 0x06, "asks for the key", {Tlvs("sign-on", kSignOnTlvs)}},
    {0x17, 0x07, "key", {Text16("key")}},
    {0x17, 0x0A, "asks for a pass code", {}},
    {0x17, 0x0B, "pass code", {Secret(Bytes16("pass code"))}},

    // 18: mail that has come.
    {0x18, 0x01, "error", {U16("code"), Tlvs("details", kErrorTlvs)}},
    {0x18, 0x06, "asks for mail", {Rest("request")}},
    {0x18,
     0x07,
     "mail",
     {Bytes("mail cookie", 8), Bytes("mail service", 16), CountedTlvs("mail", kMailTlvs)}},
    {0x18, 0x16, "watches the mail", {Rest("request")}},
};

constexpr auto KindOf(const Snac& snac) {
    return std::pair(snac.family, snac.subtype);
}
static_assert(std::is_sorted(std::begin(kSnacs), std::end(kSnacs),
                             [](const Snac& a, const Snac& b) { return KindOf(a) < KindOf(b); }));

}  // namespace

std::span<const Snac> Snacs() {
    return kSnacs;
}

std::span<const Snac> SnacsOf(std::uint16_t family, std::uint16_t subtype) {
    const std::pair kind(family, subtype);
    return {std::ranges::lower_bound(kSnacs, kind, {}, KindOf),
            std::ranges::upper_bound(kSnacs, kind, {}, KindOf)};
}

const char* FamilyName(std::uint16_t family) {
    const auto* const found = std::ranges::find(kFamilies, family, &Family::number);
    return found != std::end(kFamilies) ? found->name : "";
}

}  // namespace wire
