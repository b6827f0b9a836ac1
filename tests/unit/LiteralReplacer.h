// The rewriting of screen names as it is told: pair after pair, by the first character from position to
// position. Slow; what modSNReplace does is compared with it.
#pragma once

#include <vector>

#include "features/ReplacementList.h"

inline bool ReplaceOneLiterally(ByteString& data, const std::string& name, const std::string& replacement) {
    constexpr std::size_t kMaxPayload = 65535;
    for (std::size_t p = 1; p <= data.size(); ++p) {  // 1-based
        if (LowerAscii(data[p - 1]) != LowerAscii(name[0]) || p == 1) continue;
        const auto length = static_cast<std::size_t>(GetByte(data, p - 1));
        if (length < 2 || length > 16) continue;
        const auto found = data.substr(p - 1, length);
        if (NormalizeScreenName(found) != NormalizeScreenName(name)) continue;
        data.replace(p - 1, found.size(), replacement);
        data[p - 2] = static_cast<char>(replacement.size());
        if (data.size() > kMaxPayload) return false;
    }
    return true;
}

// The payload as it goes on: rewritten, or as it was when it would have outgrown its frame.
inline ByteString RewriteLiterally(const std::vector<Replacement>& pairs, Direction direction,
                                   const ByteString& payload) {
    auto data = payload;
    for (const auto& [screenName, replacement] : pairs) {
        const bool fits = direction == Direction::ToServer
                              ? ReplaceOneLiterally(data, replacement, screenName)
                              : ReplaceOneLiterally(data, screenName, replacement);
        if (!fits) return payload;
    }
    return data;
}
