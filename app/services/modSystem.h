// modSystem: control of the AIM client, and closing what Wrenlow itself has open. (Start-up and shut-down of
// the program stand in app/shell/StartUp; they share this module's name because they are one module to the
// user who reads an error's location tag.)
#pragma once

#include <string>

namespace modSystem {

// Closes every connection of the table and deletes the AIM client's cached user information of each name.
void CloseAllConnections();

// The AIM client's folder for a screen name: below APPDATA, or in one of two places below the Windows folder,
// whichever exists first. "" when none exists or the name is empty.
std::string GetSNPath(const std::string& screenName);

// Deletes the client's cached user information ("userinfo.bag") of the screen name, a read-only one too. For
// a name without a folder that is the file at the root of the current drive, as it has always been; an empty
// name touches no file.
void DeleteUserinfoBag(const std::string& screenName);

// Points the AIM client's proxy settings at us, if the setting "setupaim" is "1" or bForce is set and they
// are not already; a running client is restarted after asking. Windows only, as everything below.
void SetupAim(bool bForce);

// Switches the client's proxy off again, if "revertsettings" is "1" or bForce is set, and restarts it. With
// bWriteOnly the client is left alone and nothing is asked: for the end of a Windows session and for
// "Panic!".
void RevertSettings(bool bForce, bool bWriteOnly = false);

// Closes all connections, ends the AIM client and, unless bNoRestart, opens it again. Asks and tells the user
// at each step unless bSilent.
void RestartAIM(bool bNoRestart, bool bSilent);

// The message that explains a missing sign-on; without its text if bNoText.
void doErr(bool bNoText);

}  // namespace modSystem
