// The page "Buddy lists" of the Wrenlow window: the lists that are kept, what differs, and their way back.
#pragma once

#include "app/windows/WrenlowPage.h"

extern const WrenlowPageRow kBuddyListsPage;
