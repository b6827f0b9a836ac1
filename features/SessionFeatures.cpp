#include "features/SessionFeatures.h"

#include "core/LearnNames.h"
#include "features/ChatLogging.h"
#include "features/TextLimits.h"
#include "features/UserinfoBag.h"
#include "features/buddies/KeepBuddyLists.h"
#include "features/connections/ConnectionNotes.h"
#include "features/modAwayIdleProf.h"
#include "features/modLogging.h"
#include "features/modSNReplace.h"
#include "features/waiting/FetchMessages.h"
#include "features/waiting/KeepMessages.h"

// A feature is a line here and a file of its own. Each sees what those above it have made of a frame, so the
// order is part of what users see.
std::vector<FeatureEntry> SessionFeatures() {
    const auto aliases = std::make_shared<modSNReplace::SharedList>();
    const auto log = std::make_shared<modLogging::MessageLog>();
    return {
        modSNReplace::Aliases(aliases),  // first: all others see the names that the user sees
        LearnNames(),                    // the relay's own: behind the aliases, before all who ask for a name
        TextLimits::Learning(),          // needs the name
        UserinfoBag(),                   // needs the name of the sign-on request at hand
        modLogging::Logging(log, aliases),  // behind the aliases: names are logged as the user sees them
        ChatLogging(log),                   // the same
        FetchMessages(),   // behind the logs: the time in front of a text is for the client alone
        KeepMessages(),    // needs the names, with and without the aliases
        KeepBuddyLists(),  // keeps the names that the server knows
        modAwayIdleProf::ProfileSource(),  // last of those that look: the source is shown as all left it
        modAwayIdleProf::Commands(),       // wants no frame
        NotesOfConnections(),              // last of all: addresses as the client will read them
    };
}
