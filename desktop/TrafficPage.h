// The page "Traffic" of the Wrenlow window: the frames that pass, each on a line, and the selected one taken
// apart. Frames are kept while the page is in front, and only then.
#pragma once

#include "app/windows/WrenlowPage.h"

extern const WrenlowPageRow kTrafficPage;
