#include "core/DataFolder.h"

#include "core/Relay.h"
#include "os/Files.h"

os::Path DataFolder() {
    const auto* const relay = Relay::Current();
    return relay != nullptr ? relay->DataFolder() : os::ProgramFolder();
}
