// MenuLetters: which entry a letter key means in an open menu. The system leaves this to whoever draws the
// entries; the rules are the ones it follows for its own menus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "os/desktop/PopupMenu.h"

namespace os {

inline char FoldMenuLetter(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// The letter that chooses a caption: the one behind "&", else the first; in lower case, 0 for none.
inline char MenuLetter(std::string_view caption) {
    for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != '&') continue;
        if (caption[i + 1] != '&') return FoldMenuLetter(caption[i + 1]);
        ++i;
    }
    return caption.empty() ? '\0' : FoldMenuLetter(caption.front());
}

struct LetterHit {
    std::size_t position;  // among the entries of the open menu, counted from 0; npos for none
    bool choose;           // the only entry with the letter: chosen at once, else only selected

    static constexpr std::size_t npos = static_cast<std::size_t>(-1);
};

// `entries` are those of one menu, `selected` is the position of the selected one or npos. Several entries
// with the same letter take turns, downwards from the selected one.
inline LetterHit FindMenuLetter(const std::vector<const MenuEntry*>& entries, std::size_t selected,
                                char letter) {
    const auto wanted = FoldMenuLetter(letter);
    LetterHit hit{LetterHit::npos, true};
    const auto count = entries.size();
    for (std::size_t step = 1; step <= count; ++step) {
        const auto position = selected < count ? (selected + step) % count : step - 1;
        const auto& entry = *entries[position];
        if (entry.kind != MenuEntryKind::Item || !entry.enabled) continue;
        if (MenuLetter(entry.caption) != wanted) continue;
        if (hit.position != LetterHit::npos) return {hit.position, false};
        hit.position = position;
    }
    return hit;
}

}  // namespace os
