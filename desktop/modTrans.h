// modTrans: makes chosen kinds of the AIM client's windows translucent and, once their kind is switched off,
// opaque again. A window is known by its title alone, and treated once: it is remembered until the settings
// are loaded anew, so that a person's own change of a window is not undone five times a second.
//
// Nothing here throws or reports: both run behind a timer, where one failure would come back at every tick.
#pragma once

#include <cstdint>
#include <string_view>

namespace modTrans {

inline constexpr int kKinds = 4;                         // "trans1" to "trans4"
inline constexpr std::int64_t kTimerMilliseconds = 200;  // the period of frmMain's tmrTrans

// Reads the kinds and the amount from the settings, forgets which windows were treated and makes windows of
// the kinds that are off opaque. The others follow at the next tick.
void LoadTransSettings() noexcept;

// The tick of tmrTrans: treats new windows while at least one kind is switched on in the settings.
void TimerTick() noexcept;

// Percent translucency as stored, brought into 0 to 100; what is no whole number counts as 0.
int ParseAmount(std::string_view text);

// The alpha for a percentage of translucency from 0 to 100: 255 for 0, 0 for 100, halves to even.
std::uint8_t AlphaOf(int amount);

// Whether a window with this title is of the kind, counted from 0 for "trans1".
bool TitleIsOfKind(std::string_view title, int kind);

}  // namespace modTrans
