// FlapStream: cuts what arrives on a socket into whole FLAP frames.
//
// Whole frames are handed out where they lie in the arrival; only the beginning of an incomplete one is kept.
// The marker is not examined: bytes that are no frame are read as a header all the same, whose length field
// decides how much is cut off.
//
// The one surprise is a frame of four bytes without a length field, with which servers end the sessions of
// old clients. Real servers also write their headers in pieces of 1, 1, 2 and 2 bytes, so four bytes at the
// end of an arrival can be either. They are held and judged by the four that follow: these begin a new frame
// (marker, channel 1 to 5, the next sequence number), then the held ones were an empty frame; otherwise they
// were the beginning of a header. If nothing follows they become an empty frame when the peer closes, or,
// when they stood right behind a whole frame and look like the next one, after a while of silence
// (kGoodbyeSilenceMs).
#pragma once

#include <cstdint>
#include <span>

#include "base/Event.h"
#include "core/modTools.h"

class FlapStream {
 public:
    static constexpr std::int64_t kGoodbyeSilenceMs = 1500;

    // A whole frame, header included. It may be changed in place; valid until the handler returns.
    Event<std::span<char>> Frame;

    void Feed(std::span<char> arrival);

    // Whether four held bytes are to become an empty frame if nothing arrives for kGoodbyeSilenceMs.
    bool AwaitsSilence() const { return awaitsSilence_; }
    // The silence has passed.
    void SilencePassed();
    // Gives up the beginning of an incomplete frame: the stream carries none.
    ByteString TakeHeld();
    // The peer has ended its direction. Four held bytes go out as an empty frame, any other rest is lost with
    // the peer that did not finish it.
    void PeerClosed();

 private:
    std::span<char> FinishHeld(std::span<char> arrival, bool& behindFrame);
    std::span<char> JudgeGoodbye(std::span<char> arrival, bool& behindFrame);
    void HandOut(std::span<char> frame);
    void HandOutGoodbye();
    bool LooksLikeNextFrame() const;
    void Release();

    ByteString held_;             // the beginning of an incomplete frame
    bool mayBeGoodbye_ = false;   // held_ begins with four bytes that ended an arrival and are not yet judged
    bool awaitsSilence_ = false;  // and they stood right behind a whole frame, and look like the next one
    std::uint16_t lastSequence_ = 0;  // of the last frame, as the peer wrote it
};
