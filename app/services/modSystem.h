// modSystem: closing what Wrenlow itself has open, and the AIM client's folders. What asks the user and
// touches the running client stands in app/windows/AimClient.h, the order of start and end in
// app/shell/StartUp.h; all are one module to the user who reads an error's location tag.
#pragma once

#include <string>

#include "os/Path.h"

namespace modSystem {

// Closes every connection of the table and deletes the AIM client's cached user information of each name,
// which is tried once for a name.
void CloseAllConnections();

// The AIM client's folder for a screen name: below APPDATA, or in one of two places below the Windows folder,
// whichever exists first. Empty when none exists or the name is empty, and where there is no Windows.
os::Path GetSNPath(const std::string& screenName);

// Deletes the client's cached user information ("userinfo.bag") of the screen name, a read-only one too. For
// a name without a folder that is the file at the root of the current drive, as it has always been. An empty
// name touches no file, and where there is no Windows nothing is touched at all.
void DeleteUserinfoBag(const std::string& screenName);

}  // namespace modSystem
