// The page "Connections" of the Wrenlow window: what became of the last sign-on, and the connections that
// were made for it.
#pragma once

#include "app/windows/WrenlowPage.h"

extern const WrenlowPageRow kConnectionsPage;
