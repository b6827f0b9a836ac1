// FeatureChain: the features of one connection, at work in their order.
#pragma once

#include "base/Trap.h"
#include "core/FeatureTable.h"

class FeatureChain {
 public:
    using Mask = FeatureTable::Mask;

    explicit FeatureChain(const FeatureTable& table) : table_(table) {}

    // Makes the objects that are made at once. One that cannot be made is reported and missing, here as in
    // Filter. Returns false when the connection must not be without it. Throws std::bad_alloc, as Filter
    // does: a want of memory is no fault of a feature, and the connection ends rather than go on as if nobody
    // had asked for it.
    bool Begin(Session& session);

    // Those of this connection who want such a frame.
    Mask Wanted(Direction direction, std::uint8_t channel, std::string_view payload) const {
        return table_.Wanted(direction, channel, payload) & present_;
    }
    // Shows the frame to them. Whether it goes on: false when one has dropped it.
    bool Filter(Mask wanted, FrameView& frame);

    // Calls the function on each object, each in a trap with the location tag.
    template <typename Function>
    void Tell(const char* where, Function&& function) const {
        for (const auto& feature : features_) {
            if (feature) Trap(where, [&] { function(*feature); });
        }
    }
    // The same without traps: the first failure is the caller's.
    template <typename Function>
    void Command(Function&& function) const {
        for (const auto& feature : features_) {
            if (feature) function(*feature);
        }
    }

    // Releases the objects.
    void Clear();

 private:
    // Whether it was made, or there is none for this connection.
    bool Make(std::size_t index);

    const FeatureTable& table_;
    Session* session_ = nullptr;
    std::vector<std::unique_ptr<SessionFeature>> features_;  // as in the table
    Mask present_ = 0;  // those that are made, and those to be made when they are wanted
};
