// Colour schemes for menus. Without a scheme a menu has the system's colours.
#pragma once

#include "os/PopupMenu.h"

inline constexpr os::MenuColours kLightScheme{
    .background = 0xFBFAF7,
    .text = 0x23272B,
    .disabledText = 0x9A9DA0,
    .selected = 0xD7E6F1,
    .selectedText = 0x12324A,
    .separator = 0xDCDAD3,
    .header = 0xECE9E1,
    .headerText = 0x5B4A36,
};

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
