// MessagesPage: the page "Messages" of the Wrenlow window: the logged conversations by name and day, and the
// search in all of them.
#pragma once

#include "app/windows/WrenlowPage.h"

extern const WrenlowPageRow kMessagesPage;
