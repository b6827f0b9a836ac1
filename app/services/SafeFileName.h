// SafeFileName: the one way in which a name from the wire becomes part of a path.
#pragma once

#include <string>
#include <string_view>

// The name as a single component of a path, in which it can neither leave its folder nor name a device:
// - cut at 64 bytes;
// - \ / : * ? " < > | and control bytes become "_";
// - so do dots at its end, also between blanks, because Windows drops both there (".. " would be "..");
// - the name of a device (CON, NUL, COM1 ..., whatever extension follows) as a whole becomes "_".
// Legal screen names (letters, digits and blanks) pass unchanged, but for those few that are devices.
std::string SafeFileName(std::string_view name);
