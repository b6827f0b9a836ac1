#include "features/modAwayIdleProf.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "app/services/Settings.h"
#include "base/RuntimeError.h"
#include "core/clsHeaderSNAC.h"
#include "core/clsTLVChain.h"
#include "core/wire/Ucs2.h"
#include "os/CodePage.h"

namespace modAwayIdleProf {
namespace {

constexpr std::int32_t kSnacChannel = 2;
constexpr char kTextType[] = "text/aolrtf; charset=\"us-ascii\"";
constexpr char kUcs2TextType[] = "text/aolrtf; charset=\"unicode-2-0\"";
constexpr std::int32_t kProfileType = 0x0001;  // the TLV; before it, in user information, the user's class
constexpr std::int32_t kProfileText = 0x0002;  // the TLV, in both directions
constexpr std::size_t kMaxTlvs = 999;

clsHeaderFLAP MakeFlap(std::int32_t family, std::int32_t subtype, ByteString data) {
    clsHeaderSNAC snac;
    snac.Create(family, subtype, 0, 0, std::move(data));
    clsHeaderFLAP flap;
    flap.Create(kSnacChannel, snac.toString());
    return flap;
}

// SNAC (0x0002, 0x0004) carries either text: a TLV with its type, then one with the text itself.
clsHeaderFLAP MakeTextFlap(std::int32_t typeTlv, std::int32_t textTlv, const std::string& text) {
    auto wire = os::TextForWire(text);
    clsHeaderTLV type;
    type.Create(typeTlv, wire.isUcs2 ? kUcs2TextType : kTextType);
    clsHeaderTLV value;
    value.Create(textTlv, std::move(wire.bytes));
    clsTLVChain chain;
    chain.Add(std::move(type));
    chain.Add(std::move(value));
    return MakeFlap(0x0002, 0x0004, chain.toString());
}

// What a profile's bytes are, as its type says: AIM leaves it out for plain text.
enum class Characters { OneByte, Ucs2, Unknown };

// One byte for each character of ASCII, whatever stands for the others. "windows-125x" are the clients' code
// pages.
bool HoldsAsciiAsItIs(const std::string& charset) {
    return charset.empty() || charset == "us-ascii" || charset == "iso-8859-1" || charset == "utf-8" ||
           charset.starts_with("windows-125");
}

// The type is such as "text/aolrtf; charset=\"us-ascii\"".
Characters CharactersOf(const std::string& mimeType) {
    constexpr std::string_view kCharset = "charset=";
    const auto type = LowerCase(mimeType);
    const auto from = type.find(kCharset);
    std::string charset;
    if (from != std::string::npos) charset = type.substr(from + kCharset.size());
    if (charset.starts_with('"')) charset.erase(0, 1);
    charset.erase(std::min(charset.find_first_of("\"; "), charset.size()));
    if (charset == "unicode-2-0") return Characters::Ucs2;
    return HoldsAsciiAsItIs(charset) ? Characters::OneByte : Characters::Unknown;
}

std::string WithEntities(std::string_view profile, std::string_view less, std::string_view entity) {
    std::string text;
    for (std::size_t i = 0; i < profile.size(); i += less.size()) {
        const auto character = profile.substr(i, less.size());
        text += character == less ? entity : character;
    }
    return text;
}

// AIM draws the profile as it comes; closing what it may have left open gives the source a clean page.
constexpr std::string_view kAboveSource =
    "<br></body></center><body bgcolor=\"#ffffff\"></font><hr><font face=\"fixedsys\">";
constexpr std::string_view kLess = "<", kLessEntity = "&lt;";

// The profile as it is when its characters are none we know, or end within one.
std::string WithItsSource(const std::string& profile, Characters characters) {
    if (characters == Characters::OneByte)
        return profile + std::string(kAboveSource) + WithEntities(profile, kLess, kLessEntity);
    if (characters == Characters::Unknown || profile.size() % 2 != 0) return profile;
    return profile + wire::Ucs2FromAscii(kAboveSource) +
           WithEntities(profile, wire::Ucs2FromAscii(kLess), wire::Ucs2FromAscii(kLessEntity));
}

class ProfileViewer final : public SessionFeature {
 public:
    explicit ProfileViewer(Session& session) : session_(session) {}

    Verdict Frame(FrameView& frame) override {
        if (!WantsProfileHtml()) return Verdict::Pass;
        clsHeaderFLAP flap;
        flap.Create(frame.Channel(), ByteString(frame.Payload()));
        SeeProfileHtml(flap);
        if (frame.Channel() == flap.ChannelID()) {
            frame.Replace(flap.Data());
            return Verdict::Pass;
        }
        // A frame keeps its channel; one in its place has channel 2.
        session_.Send(frame.Way(), flap.Data());
        return Verdict::Drop;
    }

 private:
    Session& session_;
};

class CommandSender final : public SessionFeature {
 public:
    explicit CommandSender(Session& session) : session_(session) {}

    void SetAwayMessage(const std::string& strAway) override { Send(MakeAwayFlap(strAway)); }
    void SetIdle(std::int32_t mins) override { Send(MakeIdleFlap(mins)); }
    void SetProfile(const std::string& strProfile) override { Send(MakeProfileFlap(strProfile)); }

 private:
    void Send(const clsHeaderFLAP& flap) { session_.Send(Direction::ToServer, flap.Data()); }

    Session& session_;
};

}  // namespace

FeatureEntry ProfileSource() {
    return FeatureOf<ProfileViewer>({{0x0002, 0x0006}});
}

FeatureEntry Commands() {
    return FeatureOf<CommandSender>({}, Made::AtOnce);
}

clsHeaderFLAP MakeAwayFlap(const std::string& strAway) {
    return MakeTextFlap(0x0003, 0x0004, strAway);
}

clsHeaderFLAP MakeIdleFlap(std::int32_t mins) {
    constexpr std::int32_t kSecondsPerMinute = 60;
    constexpr auto kLimits = std::numeric_limits<std::int32_t>();
    if (mins > kLimits.max() / kSecondsPerMinute || mins < kLimits.min() / kSecondsPerMinute) ThrowOverflow();
    // 32 bits on the wire, of which only the low half is ever written: more than 65,535 seconds are refused.
    return MakeFlap(0x0001, 0x0011, WordToStr(0) + WordToStr(mins * kSecondsPerMinute));
}

clsHeaderFLAP MakeProfileFlap(const std::string& strProfile) {
    return MakeTextFlap(0x0001, kProfileText, strProfile);
}

bool WantsProfileHtml() {
    return settings::IsOn("seehtml");
}

// The data of the reply:
//
//   offset  width  meaning
//   0       1      length n of the screen name
//   1       n      screen name
//   1+n     2      warning level
//   3+n     2      count of the user-information TLVs
//   5+n     rest   those TLVs, then the ones of the profile; read as one chain
void SeeProfileHtml(clsHeaderFLAP& flap) {
    constexpr std::size_t kHeadBesidesName = 5;

    clsHeaderSNAC snac;
    snac.ParseData(flap.Data());
    const auto& data = snac.Data();
    const auto headLength = kHeadBesidesName + static_cast<std::size_t>(GetByte(data, 1));
    if (headLength > data.size()) ThrowInvalidArgument();

    clsTLVChain chain;
    chain.CreateFromString(data, headLength + 1, data.size(), kMaxTlvs);
    const auto* const type = chain.GetTLVRev(kProfileType);
    const auto characters = type != nullptr ? CharactersOf(type->Value()) : Characters::OneByte;
    if (auto* const profile = chain.GetTLVRev(kProfileText))
        profile->Value(WithItsSource(profile->Value(), characters));
    snac.Data(data.substr(0, headLength) + chain.toString());
    flap.Create(kSnacChannel, snac.toString());
}

}  // namespace modAwayIdleProf
