// OnlyInstance: whether the program runs already, for the same user's session on the desktop.
#pragma once

namespace os {

// Takes the name of the one that runs. False when another process has it.
bool ClaimOnlyInstance();

// Gives it back, so that the program can be started anew while this process still ends.
void ReleaseOnlyInstance();

}  // namespace os
