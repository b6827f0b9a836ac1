// SessionHooks: what the relay asks of the session features. The relay declares the interface, the features
// implement it (features/clsSessionFeatures), start-up wires the two. Every method does nothing by default,
// so the relay alone is a working proxy.
//
// Each call stands in a trap of its own: an implementation may throw, then the failure is reported once and
// the frame goes on in the state before the failing step.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/clsHeaderFLAP.h"
#include "core/clsHeaderSNAC.h"

// The aliases of one connection, an immutable snapshot. Opaque here; features/modSNReplace defines it.
class ReplacementList;

enum class Direction { ToServer, ToClient };

class SessionHooks {
 public:
    virtual ~SessionHooks() = default;

    // Reads the alias list for a connection that begins; nullptr when there are no aliases, so that the
    // connection's frames are not looked at. The connection keeps the snapshot to its end.
    virtual std::shared_ptr<const ReplacementList> LoadReplacements() { return nullptr; }

    // Rewrites a frame's payload. Returns true with the new payload in `rewritten` when something was
    // replaced, false (and `rewritten` unspecified) when the payload stays as it is.
    virtual bool ReplaceScreenNames(const ReplacementList& /*list*/, Direction /*direction*/,
                                    std::string_view /*payload*/, ByteString& /*rewritten*/) {
        return false;
    }

    // An instant message passes: SNAC (0x0004, 0x0007) toward the client, (0x0004, 0x0006) toward the server.
    // `ownScreenName` is the connection's own screen name, the speaker of outgoing messages.
    virtual void LogMessage(Direction /*direction*/, const clsHeaderSNAC& /*snac*/,
                            const std::string& /*ownScreenName*/) {}

    // Whether user-information replies are to be rewritten right now; asked per reply, so that a change of
    // the setting counts at once and an unchanged reply costs no record.
    virtual bool WantsProfileHtml() { return false; }
    // Rewrites a user-information reply, SNAC (0x0002, 0x0006), so that a profile shows its own source.
    virtual void SeeProfileHtml(clsHeaderFLAP& /*flap*/) {}

    // Builders of the frames that commands inject; nothing when the feature is absent.
    virtual std::optional<clsHeaderFLAP> MakeAwayFlap(const std::string& /*strAway*/) { return {}; }
    virtual std::optional<clsHeaderFLAP> MakeIdleFlap(std::int32_t /*mins*/) { return {}; }
    virtual std::optional<clsHeaderFLAP> MakeProfileFlap(const std::string& /*strProfile*/) { return {}; }

    // Deletes the AIM client's cached user information of a screen name, at sign-on and at close.
    virtual void DeleteUserinfoBag(const std::string& /*screenName*/) {}
};

// The hooks in force. Start-up sets the features; nullptr puts the do-nothing hooks back.
SessionHooks& CurrentSessionHooks();
void SetSessionHooks(SessionHooks* hooks);
