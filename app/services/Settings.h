// Settings: every setting of both programs, a row each. A new setting is a new row: the tray program then
// stores its default at the first start, the relay takes the same default, and readers name it, as in
// IsOn("logims"). A name that is not in the table, or of another kind, does not compile.
//
// Every reader reads the store (modRegistry) at the moment it needs a value; nothing is kept in memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/Text.h"

namespace settings {

enum class Kind : std::uint8_t {
    Switch,        // "1" or "0", and on only when it is "1"
    OnUnlessZero,  // "1" or "0", and off only when it is "0"
    Choice,        // "True" or "False", and on only when it is "True"
    Number,        // in decimal
    Text,
};

struct Setting {
    const char* name;  // of the value in the store, in which case does not matter
    Kind kind;
    const char* initial;
};

// The manual (docs/manual/settings.md) lists the same rows.
inline constexpr Setting kTable[] = {
    {"checkupdate", Kind::OnUnlessZero, "1"},
    {"setupaim", Kind::Switch, "1"},
    {"revertsettings", Kind::Switch, "0"},
    {"onstartup", Kind::OnUnlessZero, "1"},
    {"enablehotkey", Kind::Switch, "0"},
    {"trans1", Kind::OnUnlessZero, "0"},
    {"trans2", Kind::OnUnlessZero, "0"},
    {"trans3", Kind::OnUnlessZero, "0"},
    {"trans4", Kind::OnUnlessZero, "0"},
    {"transamount", Kind::Number, "30"},
    {"logims", Kind::Switch, "0"},
    {"logwhere", Kind::Text, "C:\\AimLogs\\"},
    {"logfolder", Kind::Switch, "0"},
    {"logwhat", Kind::Choice, "True"},
    {"loghowtxt", Kind::Choice, "False"},
    {"loghowhtm", Kind::Choice, "True"},
    {"logchat", Kind::Switch, "0"},
    {"seehtml", Kind::Switch, "0"},
    {"keepmessages", Kind::Switch, "0"},
    {"fetchmessages", Kind::Switch, "1"},
    {"server", Kind::Text, ""},
    {"server-always", Kind::Switch, "0"},
    {"server-fallback", Kind::OnUnlessZero, "1"},
};

// A stored value of 1,024 bytes or more cannot be read back.
inline constexpr std::size_t kMaxTextBytes = 1000;

// The row of that name; null when there is none.
constexpr const Setting* Find(std::string_view name) {
    for (const auto& setting : kTable) {
        if (SameWithoutCase(setting.name, name)) return &setting;
    }
    return nullptr;
}

constexpr bool IsMark(Kind kind) {
    return kind == Kind::Switch || kind == Kind::OnUnlessZero || kind == Kind::Choice;
}

// The name of a row of the table, as it stands in the source: of a mark, which is on or off, or of a text.
template <bool kIsMark>
class Name {
 public:
    consteval Name(const char* name) : setting_(*Find(name)) {
        if (IsMark(setting_.kind) != kIsMark) throw "a setting of another kind";
    }
    constexpr const Setting& Row() const { return setting_; }

 private:
    const Setting& setting_;
};

bool IsOn(Name<true> mark);

// A text or the text of a number, as it is stored.
std::string Text(Name<false> setting);

// What a stored mark means, and how one is stored.
bool MeansOn(const Setting& mark, std::string_view stored);
const char* StoredMark(const Setting& mark, bool on);

// Stores the default of each setting that has no value.
void StoreMissing();

// What is wrong with a value for the setting, as a sentence for a person; "" when it can be stored.
std::string FaultOf(const Setting& setting, std::string_view value);

}  // namespace settings
