// The page "Waiting" of the Wrenlow window: the messages that wait for buddies who are off line.
#pragma once

#include "app/windows/WrenlowPage.h"

extern const WrenlowPageRow kWaitingPage;
