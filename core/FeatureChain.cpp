#include "core/FeatureChain.h"

#include <bit>
#include <new>

#include "base/RuntimeError.h"
#include "core/FlapFrame.h"

namespace {

constexpr char kDataArrival[] = "clsAIMSocket:DataArrival";

// As Trap, but a want of memory goes through to whoever ends the connection for it.
template <typename Body>
auto TrapFaults(Body&& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        ReportCurrentException(kDataArrival, 0);
    }
    return std::invoke_result_t<Body>();
}

}  // namespace

clsHeaderSNAC FrameView::Snac() const {
    clsHeaderSNAC snac;
    snac.ParseData(payload_);
    return snac;
}

void FrameView::Replace(ByteString payload) {
    if (payload.size() > FlapFrame::kMaxPayload) ThrowOverflow();
    proposed_ = std::move(payload);
}

bool FrameView::Settle() {
    if (!proposed_) return false;
    replaced_ = std::move(proposed_);
    proposed_.reset();
    payload_ = *replaced_;
    return true;
}

bool FeatureChain::Begin(Session& session) {
    Clear();
    session_ = &session;
    const auto& entries = table_.Entries();
    features_.resize(entries.size());
    for (std::size_t index = 0; index < entries.size(); ++index) {
        present_ |= Mask{1} << index;
        const auto made = entries[index].made;
        if (made != Made::WithFirstFrame && !Make(index) && made == Made::OrRefused) return false;
    }
    return true;
}

bool FeatureChain::Make(std::size_t index) {
    const bool isDone = TrapFaults([&] {
        features_[index] = table_.Entries()[index].make(*session_);
        return true;
    });
    if (!features_[index]) present_ &= ~(Mask{1} << index);
    return isDone;
}

bool FeatureChain::Filter(Mask wanted, FrameView& frame) {
    while (wanted != 0) {
        const auto index = static_cast<unsigned>(std::countr_zero(wanted));
        wanted &= wanted - 1;
        if (!features_[index]) Make(index);
        if (!features_[index]) continue;
        bool isReplaced = false;
        const auto verdict = TrapFaults([&] {
            frame.proposed_.reset();  // what a step proposed that failed
            const auto result = features_[index]->Frame(frame);
            isReplaced = frame.Settle();
            return result;
        });
        if (verdict == Verdict::Drop) return false;
        // The replacement may be of another kind, which others want.
        if (isReplaced)
            wanted = Wanted(frame.direction_, frame.channel_, frame.payload_) & ~((Mask{2} << index) - 1);
    }
    return true;
}

void FeatureChain::Clear() {
    features_.clear();
    features_.shrink_to_fit();
    present_ = 0;
}
