#include "bench/load/Frames.h"

#include <bit>
#include <random>

#include "bench/load/Options.h"

namespace bench {

std::uint64_t HashBytes(const std::uint8_t* p, std::size_t n) {
    std::uint64_t h = 0x9E3779B97F4A7C15ull ^ n;
    for (; n >= 8; p += 8, n -= 8) h = (std::rotl(h, 23) ^ Load64(p)) * 0xD6E8FEB86659FD93ull;
    for (; n > 0; ++p, --n) h = (std::rotl(h, 23) ^ *p) * 0xD6E8FEB86659FD93ull;
    return h;
}

std::uint64_t MixIndex(std::uint64_t index) {
    return (index + 1) * 0xA24BAED4963EE407ull;
}

Template MakeTemplate(Subtype subtype, const Bytes& body) {
    Template t;
    t.bytes.assign(kPrefix, 0);
    t.bytes[0] = 0x2A;
    t.bytes[1] = 2;
    Put16(&t.bytes[4], std::uint16_t(kSnacHeader + kMeta + body.size()));
    Put16(&t.bytes[6], kFamily);
    Put16(&t.bytes[8], subtype);
    t.bytes.insert(t.bytes.end(), body.begin(), body.end());
    t.bodyHash = HashBytes(body.data(), body.size());
    return t;
}

namespace {

Bytes RandomBytes(std::mt19937& rng, std::size_t n) {
    Bytes b(n);
    for (auto& x : b) x = std::uint8_t(options.text ? ' ' + rng() % 95 : rng());
    return b;
}

}  // namespace

const std::vector<Template>& FrameMix() {
    static const std::vector<Template> mix = [] {
        std::mt19937 rng(20240607);
        std::vector<Template> m;
        for (int i = 0; i < 2048; ++i) {
            bool large = rng() % 100 < 5;
            std::size_t payload = large ? 2048 + rng() % 6145 : 40 + rng() % 261;
            if (options.payload != 0) payload = options.payload;
            m.push_back(MakeTemplate(kData, RandomBytes(rng, payload - kSnacHeader - kMeta)));
        }
        return m;
    }();
    return mix;
}

const Template& PingTemplate() {
    static const Template t = [] {
        std::mt19937 rng(7);
        return MakeTemplate(kData, RandomBytes(rng, 120 - kPrefix));
    }();
    return t;
}

}  // namespace bench
