#include "features/TextLimits.h"

#include <algorithm>
#include <map>

#include "core/clsTLVChain.h"
#include "features/modAwayIdleProf.h"

namespace TextLimits {
namespace {

constexpr std::int32_t kMaxTextTlv = 0x0001;  // the TLV, a word
constexpr std::size_t kMaxTlvs = 999;

// By the normal form of the screen name.
std::map<std::string, std::size_t>& Said() {
    static std::map<std::string, std::size_t> said;
    return said;
}

// A server may say it before it names the user.
class Listener final : public SessionFeature {
 public:
    explicit Listener(Session& session) : session_(session) {}

    Verdict Frame(FrameView& frame) override {
        rights_ = frame.Snac().Data();
        Note();
        return Verdict::Pass;
    }
    void SignedOn() override { Note(); }

 private:
    void Note() {
        const auto& name = session_.Names(Direction::ToClient).name;
        if (!name.empty() && !rights_.empty()) Learn(name, rights_);
    }

    Session& session_;
    ByteString rights_;
};

}  // namespace

std::size_t For(const std::vector<std::string>& screenNames) {
    auto limit = modAwayIdleProf::kMaxText;
    for (const auto& name : screenNames) {
        const auto said = Said().find(NormalizeScreenName(name));
        limit = std::min(limit, said != Said().end() ? said->second : kUnsaid);
    }
    return limit;
}

void Learn(const std::string& screenName, std::string_view rights) {
    clsTLVChain chain;
    chain.CreateFromString(ByteString(rights), 1, rights.size(), kMaxTlvs);
    const auto* const tlv = chain.GetTLVRev(kMaxTextTlv);
    if (tlv == nullptr || tlv->Value().size() < 2) return;
    if (const auto most = GetWord(tlv->Value(), 1); most > 0)
        Said()[NormalizeScreenName(screenName)] = static_cast<std::size_t>(most);
}

FeatureEntry Learning() {
    return FeatureOf<Listener>({{0x0002, 0x0003, Direction::ToClient}});
}

void Reset() {
    Said().clear();
}

}  // namespace TextLimits
