// Colour schemes for menus. Without a scheme a menu has the system's colours.
#pragma once

#include "os/desktop/PopupMenu.h"

inline constexpr os::MenuColours kDarkScheme{
    .background = 0x24272B,
    .text = 0xE9E7E2,
    .disabledText = 0x7D8187,
    .selected = 0x3A5468,
    .selectedText = 0xFFFFFF,
    .separator = 0x43484E,
    .header = 0x31363C,
    .headerText = 0xD9B98C,
};
