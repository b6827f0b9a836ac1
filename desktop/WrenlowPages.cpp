// The pages of the Wrenlow window, in the order of their tabs.
#include "desktop/BuddyListsPage.h"
#include "desktop/ConnectionsPage.h"
#include "desktop/MessagesPage.h"
#include "desktop/TrafficPage.h"
#include "desktop/WaitingPage.h"
#include "desktop/frmWrenlow.h"

std::span<const WrenlowPageRow* const> WrenlowPages() {
    static constexpr const WrenlowPageRow* kPages[] = {
        &kConnectionsPage, &kTrafficPage, &kMessagesPage, &kWaitingPage, &kBuddyListsPage,
    };
    return kPages;
}
