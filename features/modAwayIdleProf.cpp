#include "features/modAwayIdleProf.h"

#include <limits>
#include <string_view>
#include <utility>

#include "app/services/modRegistry.h"
#include "base/RuntimeError.h"
#include "core/clsHeaderSNAC.h"
#include "core/clsTLVChain.h"

namespace modAwayIdleProf {
namespace {

constexpr std::int32_t kSnacChannel = 2;
constexpr char kTextType[] = "text/aolrtf; charset=\"us-ascii\"";
constexpr std::int32_t kProfileText = 0x0002;  // the TLV, in both directions
constexpr std::size_t kMostTlvs = 999;

clsHeaderFLAP MakeFlap(std::int32_t family, std::int32_t subtype, ByteString data) {
    clsHeaderSNAC snac;
    snac.Create(family, subtype, 0, 0, std::move(data));
    clsHeaderFLAP flap;
    flap.Create(kSnacChannel, snac.toString());
    return flap;
}

// SNAC (0x0002, 0x0004) carries either text: a TLV with its type, then one with the text itself.
clsHeaderFLAP MakeTextFlap(std::int32_t typeTlv, std::int32_t textTlv, const std::string& text) {
    clsHeaderTLV type;
    type.Create(typeTlv, kTextType);
    clsHeaderTLV value;
    value.Create(textTlv, text);
    clsTLVChain chain;
    chain.Add(std::move(type));
    chain.Add(std::move(value));
    return MakeFlap(0x0002, 0x0004, chain.toString());
}

// AIM draws the profile as it comes; closing what it may have left open gives the source a clean page.
std::string WithItsSource(const std::string& profile) {
    std::string text =
        profile + "<br></body></center><body bgcolor=\"#ffffff\"></font><hr><font face=\"fixedsys\">";
    for (const char c : profile) {
        if (c == '<') {
            text += "&lt;";
        } else {
            text += c;
        }
    }
    return text;
}

}  // namespace

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
    return modRegistry::ReadSetting("seehtml") == "1";
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
    chain.CreateFromString(data, headLength + 1, data.size(), kMostTlvs);
    if (auto* const profile = chain.GetTLVRev(kProfileText)) profile->Value(WithItsSource(profile->Value()));
    snac.Data(data.substr(0, headLength) + chain.toString());
    flap.Create(kSnacChannel, snac.toString());
}

}  // namespace modAwayIdleProf
