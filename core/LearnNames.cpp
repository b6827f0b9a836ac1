#include "core/LearnNames.h"

namespace {

constexpr Interest kSignOnRequest{0x0017, 0x0002};
constexpr Interest kSelfInformation{0x0001, 0x000F};

ByteString SnacData(std::string_view payload) {
    return ByteString(payload.substr(clsHeaderSNAC::kHeaderLength));
}

// Sign-on request: the data begin with a TLV whose value is the name. Read as clients have always been read:
// the low byte of the TLV's type leads to the low byte of its length.
std::string NameInSignOn(const ByteString& data) {
    const auto lengthPosition = 1 + static_cast<std::size_t>(GetByte(data, 2)) + 2;
    return data.substr(lengthPosition, static_cast<std::size_t>(GetByte(data, lengthPosition)));
}

// Self-information: the data begin with the name behind its length byte.
std::string NameInSelfInformation(const ByteString& data) {
    return data.substr(1, static_cast<std::size_t>(GetByte(data, 1)));
}

class NameLearner final : public SessionFeature {
 public:
    explicit NameLearner(Session& session) : session_(session) {}

    Verdict Frame(FrameView& frame) override {
        const auto data = SnacData(frame.Payload());
        const auto original = SnacData(frame.Original());
        if (frame.Snac().FamID() == kSignOnRequest.family)
            session_.Learn(frame.Way(), {NameInSignOn(data), NameInSignOn(original)}, false);
        else
            session_.Learn(frame.Way(), {NameInSelfInformation(data), NameInSelfInformation(original)}, true);
        return Verdict::Pass;
    }

 private:
    Session& session_;
};

}  // namespace

FeatureEntry LearnNames() {
    return FeatureOf<NameLearner>({kSignOnRequest, kSelfInformation});
}
